#include "libs/Wayfinder/Network/NetlinkExchange.h"

#include <gtest/gtest.h>

namespace {

TEST(NetlinkExchange, OneThatGetsNoAnswerEnds) {
  const Wayfinding::NetlinkSocketPtr socket = Wayfinding::ConnectToKernel();
  ASSERT_NE(socket, nullptr);
  EXPECT_EQ(nl_recvmsgs_default(socket.get()), -NLE_AGAIN) << "nothing was asked";
}

TEST(NetlinkExchange, OneThatIsAnsweredIsNotCutOff) {
  const Wayfinding::NetlinkSocketPtr socket = Wayfinding::ConnectToKernel();
  ASSERT_NE(socket, nullptr);
  EXPECT_TRUE(Wayfinding::FindLink(*socket, 1));
}

}  // namespace
