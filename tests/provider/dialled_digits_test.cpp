#include "provider/dialled_digits.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

struct DialledAddress {
    std::u16string_view address;
    const char* digits;
};

TEST(DialledDigits, KeepsDigitsStarAndHashInOrder) {
    const DialledAddress addresses[] = {
        {u"+49 (30) 1234", "49301234"},    {u"*21#", "*21#"}, {u"T123", "123"},
        {u"0123456789*#", "0123456789*#"}, {u"", ""},         {u"ABCDabcd +-()", ""},
    };
    for (const DialledAddress& dialled : addresses) EXPECT_EQ(DialledDigits(dialled.address), dialled.digits);
}

TEST(DialledDigits, KeepsWhatFollowsASeparatorOfADialableAddress) {
    EXPECT_EQ(DialledDigits(u"30,w1@2$3!4?5;6"), "30123456");
    EXPECT_EQ(DialledDigits(u"1234|56^Name 7\r\n89"), "123456789");
}

TEST(DialledDigits, TakesNoUnitForADigitBecauseOfItsLowByte) {
    const char16_t units[] = {0x0131, 0xFF11, 0x0660, 0x2A2A, 0xD835, 0xDFCF, 0x00B2, 0};
    EXPECT_EQ(DialledDigits(units), "");
}

}  // namespace
}  // namespace velmora
