#include "base/Log.h"

#include <gtest/gtest.h>

namespace dorix {
namespace {

TEST(LogTest, ALineStaysOneLineWhateverItHolds) {
    testing::internal::CaptureStderr();
    logLine("no se pudo abrir «a\nDORIX: todo va bien\r\x1B[2J\x7F\u009B\u2028é👩‍🚀\xC3(\xFF»");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "DORIX: no se pudo abrir «a\\u000aDORIX: todo va "
              "bien\\u000d\\u001b[2J\\u007f\\u009b\\u2028é👩‍🚀\uFFFD("
              "\uFFFD»\n");
}

}  // namespace
}  // namespace dorix
