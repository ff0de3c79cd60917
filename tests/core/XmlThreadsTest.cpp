#include "SRLib/SRXMLProvider.h"
#include "core/ParserTest.h"
#include "libs/DomLib/DomServices.h"

#include <barrier>
#include <thread>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

constexpr int kThreads = 8;

class XmlThreadsTest : public ParserTest {
 protected:
  // Runs the work on all threads at once and waits for them.
  template <class Work>
  static void OnAllThreads(Work work) {
    std::barrier start(kThreads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&start, &work, i] {
        start.arrive_and_wait();
        work(i);
      });
    }
  }
};

TEST_F(XmlThreadsTest, TheLibraryComesAndGoesOnManyThreadsAtOnce) {
  OnAllThreads([](int) {
    for (int i = 0; i < 25; ++i) {
      DOMServices dom;
      EXPECT_NE(dom.GetDocument(L"<a/>"), nullptr);
    }
  });
}

TEST_F(XmlThreadsTest, SeveralParsersReadTheirOwnDocumentsAtOnce) {
  OnAllThreads([](int thread) {
    const std::wstring id = L"s" + std::to_wstring(thread);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(Ids(SRXMLProvider().Parse(ServiceRecord(Service(id)))), (Wide{id}));
      EXPECT_EQ(Ids(SRXMLProvider().Parse(DiscoveryDocument(Service(id, L"", InServiceRecordNamespace())))),
                (Wide{id}));
    }
  });
}

TEST_F(XmlThreadsTest, AFailureOnOneThreadLeavesTheOthersAlone) {
  OnAllThreads([](int thread) {
    const bool fails = thread % 2 == 0;
    const std::wstring document = fails ? Repeated(L"<a>", 300) : ServiceRecord(Service(L"s"));
    for (int i = 0; i < 10; ++i) EXPECT_EQ(SRXMLProvider().Parse(document).size(), fails ? 0U : 1U);
  });
}

TEST_F(XmlThreadsTest, OneParserOutlivesTheOthers) {
  DOMServices outer;
  OnAllThreads([](int) { const DOMServices inner; });
  EXPECT_NE(outer.GetDocument(ServiceRecord(Service(L"s"))), nullptr);
}

}  // namespace
