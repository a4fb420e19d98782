#include "tools/velmoractl/tapi_error.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

TEST(TapiErrorText, GivesNameNumberAndMeaning) {
    EXPECT_EQ(TapiErrorText(0x80000044), "LINEERR_NOMEM (0x80000044): there is not enough memory");
    EXPECT_EQ(TapiErrorText(0x80000056), "LINEERR_NOMULTIPLEINSTANCE (0x80000056): the provider is added already");
}

TEST(TapiErrorText, GivesTheNumberAloneOfAnythingElse) {
    EXPECT_EQ(TapiErrorText(0x800000AB), "0x800000AB");
    EXPECT_EQ(TapiErrorText(1), "0x00000001");
}

}  // namespace
}  // namespace velmora::ctl
