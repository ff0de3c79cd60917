#include "libs/Warden_SDK/Challenge.h"
#include "libs/Warden_SDK/DigestAnswer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;
using Warden::DigestAnswer;
using Warden::DigestChallenge;
using Warden::DigestRequest;

std::optional<DigestChallenge> ChallengeOf(const std::string& value) {
  std::vector<Warden::Challenge> challenges;
  Warden::AppendChallenges(value, challenges);
  return challenges.empty() ? std::nullopt : DigestChallenge::From(challenges.front());
}

std::string AnswerTo(const std::string& challenge, const DigestRequest& request) {
  const std::optional<DigestChallenge> parsed = ChallengeOf(challenge);
  if (!parsed) return "not servable";
  const std::optional<CredentialWire::Secret> answer = DigestAnswer(*parsed, request);
  return answer ? std::string(answer->View()) : "no hash";
}

// RFC 7616, 3.9.1.
constexpr const char* kExample =
    R"(realm="http-auth@example.org", qop="auth, auth-int", )"
    R"(nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", opaque="FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS")";
constexpr DigestRequest kExampleRequest{
    "GET", "/dir/index.html", "Mufasa", "Circle of Life", "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ", 1};

TEST(DigestAnswer, IsTheOneOfRfc7616WithSha256) {
  EXPECT_EQ(AnswerTo(std::string("Digest ") + kExample + ", algorithm=SHA-256", kExampleRequest),
            R"(Digest username="Mufasa", realm="http-auth@example.org", )"
            R"(nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", uri="/dir/index.html", )"
            R"(response="753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1", )"
            R"(algorithm=SHA-256, opaque="FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS", )"
            R"(qop=auth, nc=00000001, cnonce="f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ")");
}

TEST(DigestAnswer, IsTheOneOfRfc7616WithMd5) {
  EXPECT_THAT(AnswerTo(std::string("Digest ") + kExample + ", algorithm=MD5", kExampleRequest),
              HasSubstr(R"(response="8ca523f5e9506fed4657c9700eebdbec")"));
}

// RFC 2617, 3.5.
constexpr DigestRequest kOldRequest{"GET", "/dir/index.html", "Mufasa", "Circle Of Life", "0a4f113b", 1};

TEST(DigestAnswer, IsTheOneOfRfc2617) {
  const std::string answer =
      AnswerTo(R"(Digest realm="testrealm@host.com", qop="auth,auth-int", )"
               R"(nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093", opaque="5ccc069c403ebaf9f0171e9517f40e41")",
               kOldRequest);
  EXPECT_THAT(answer, HasSubstr(R"(response="6629fae49393a05397450978507c4ef1")"));
  EXPECT_THAT(answer, Not(HasSubstr("algorithm")));
}

TEST(DigestAnswer, WithoutQopHasNeitherCountNorClientNonce) {
  const std::string answer = AnswerTo(
      R"(Digest realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")", kOldRequest);
  EXPECT_THAT(answer, HasSubstr(R"(response="670fd8c2df070c60b045671b8b24ff02")"));
  EXPECT_THAT(answer, Not(HasSubstr("qop")));
  EXPECT_THAT(answer, Not(HasSubstr("nc=")));
}

TEST(DigestAnswer, CountsInEightHexadecimalDigits) {
  DigestRequest request = kOldRequest;
  request.nonceCount = 0x1ABC;
  EXPECT_THAT(AnswerTo(R"(Digest realm="r", nonce="n", qop=auth)", request), HasSubstr("nc=00001abc,"));
}

TEST(DigestAnswer, EscapesQuotesAndBackslashes) {
  DigestRequest request = kOldRequest;
  request.userName = R"(DOMAIN\"user")";
  EXPECT_THAT(AnswerTo(R"(Digest realm="a \"b\" \\c", nonce="n")", request),
              HasSubstr(R"(username="DOMAIN\\\"user\"", realm="a \"b\" \\c",)"));
}

// RFC 7616, 3.9.2, names the user this way.
TEST(DigestAnswer, NamesAUserOutsideAsciiInTheExtendedForm) {
  DigestRequest request = kOldRequest;
  request.userName = "J\xC3\xA4s\xC3\xB8n Doe";
  EXPECT_THAT(AnswerTo(R"(Digest realm="r", nonce="n", charset=UTF-8)", request),
              HasSubstr("Digest username*=UTF-8''J%C3%A4s%C3%B8n%20Doe, realm="));
  EXPECT_THAT(AnswerTo(R"(Digest realm="r", nonce="n")", request),
              HasSubstr("Digest username=\"J\xC3\xA4s\xC3\xB8n Doe\", realm="));
}

TEST(DigestAnswer, BindsASessionToBothNonces) {
  // Both worked out with md5sum.
  const DigestRequest request{"GET", "/", "user", "pass", "c", 1};
  const std::string plain = AnswerTo(R"(Digest realm="r", nonce="n", qop="auth", algorithm=MD5)", request);
  const std::string session =
      AnswerTo(R"(Digest realm="r", nonce="n", qop="auth", algorithm=MD5-sess)", request);
  EXPECT_THAT(plain, HasSubstr("response=\"99c580a28a3ecf6a763e039f543a096e\""));
  EXPECT_THAT(session, HasSubstr("response=\"db3523d5c6ee193c43982caaddeef908\""));
}

TEST(DigestChallenge, IsNotServableWhenItOffersWhatIsUnknown) {
  for (const char* challenge :
       {R"(Digest realm="r", nonce="n", qop="auth-int")", R"(Digest realm="r", nonce="n", algorithm=SHA-999)",
        R"(Digest nonce="n", qop="auth")", R"(Digest realm="r", qop="auth")",
        R"(Digest realm="r", nonce="n", algorithm=MD5-sess)", R"(Basic realm="r", nonce="n")"}) {
    EXPECT_FALSE(ChallengeOf(challenge)) << challenge;
  }
}

TEST(DigestChallenge, ReadsItsWordsWithoutRegardToCase) {
  const auto challenge =
      ChallengeOf(R"(DIGEST REALM="r", NONCE="n", QOP=" x , AUTH ", ALGORITHM="sha-256", STALE=TRUE)");
  ASSERT_TRUE(challenge);
  EXPECT_EQ(challenge->algorithm, Warden::HashAlgorithm::SHA256);
  EXPECT_TRUE(challenge->hasQop);
  EXPECT_TRUE(challenge->isStale);
}

}  // namespace
