#include "tools/velmoractl/command_line.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

constexpr OptionRule kRules[] = {{"--tsp", true}, {"--xml", false}, {"--help", false}};

Arguments Parse(const std::vector<ByteString>& words) {
    return ParseArguments(words, kRules);
}

using Words = std::vector<ByteString>;

TEST(ParseArguments, SortsOptionsFromWords) {
    const Arguments arguments = Parse({"4930", "--tsp", "a.tsp", "--xml", "x"});
    EXPECT_EQ(arguments.error, "");
    EXPECT_EQ(arguments.words, (Words{"4930", "x"}));
    EXPECT_EQ(arguments.options.at("--tsp"), "a.tsp");
    EXPECT_TRUE(arguments.Has("--xml"));
    EXPECT_FALSE(arguments.Has("--help"));
}

TEST(ParseArguments, TakesAValueBehindAnEqualsSign) {
    EXPECT_EQ(Parse({"--tsp=a=b"}).options.at("--tsp"), "a=b");
    EXPECT_EQ(Parse({"--tsp="}).options.at("--tsp"), "");
}

TEST(ParseArguments, TakesANegativeNumberForAWord) {
    EXPECT_EQ(Parse({"set", "loglevel", "-1"}).words, (Words{"set", "loglevel", "-1"}));
}

TEST(ParseArguments, TakesEverythingBehindTwoDashesForWords) {
    EXPECT_EQ(Parse({"a", "--", "--xml", "--"}).words, (Words{"a", "--xml", "--"}));
}

TEST(ParseArguments, KnowsTheShortFormOfHelp) {
    EXPECT_TRUE(Parse({"-h"}).Has("--help"));
}

TEST(ParseArguments, NamesWhatIsWrong) {
    EXPECT_EQ(Parse({"--nosuch"}).error, "There is no option --nosuch.");
    EXPECT_EQ(Parse({"--nosuch=1"}).error, "There is no option --nosuch.");
    EXPECT_EQ(Parse({"--tsp"}).error, "The option --tsp needs a value.");
    EXPECT_EQ(Parse({"--xml=1"}).error, "The option --xml takes no value.");
}

TEST(ParseWholeNumber, TakesNothingButANumberUpToItsLimit) {
    EXPECT_EQ(ParseWholeNumber("0", 10), 0U);
    EXPECT_EQ(ParseWholeNumber("10", 10), 10U);
    for (const char* text : {"11", "", "-1", "+1", " 1", "1 ", "1s", "1.5", "99999999999"}) {
        EXPECT_EQ(ParseWholeNumber(text, 10), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace velmora::ctl
