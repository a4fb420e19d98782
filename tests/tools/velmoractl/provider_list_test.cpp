#include "tools/velmoractl/provider_list.h"

#include <gtest/gtest.h>

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

using Ids = std::vector<uint32_t>;

// The key of a telephony service with files, whose IDs are 1, 2 and so on.
ProviderKey KeyWith(const std::vector<ByteString>& files) {
    ProviderKey key;
    key.numbers["numproviders"] = static_cast<uint32_t>(files.size());
    key.numbers["nextproviderid"] = static_cast<uint32_t>(files.size()) + 1;
    for (size_t index = 0; index < files.size(); ++index) {
        const ByteString number = DecimalText(static_cast<int64_t>(index));
        key.texts["providerfilename" + number] = files[index];
        key.numbers["providerid" + number] = static_cast<uint32_t>(index) + 1;
    }
    return key;
}

TEST(ProviderIds, AreThoseOfTheFile) {
    EXPECT_EQ(ProviderIds(KeyWith({"unimdm.tsp", "velmora.tsp", "hidphone.tsp"}), "velmora.tsp"), (Ids{2}));
}

TEST(ProviderIds, AreNoneWhenTheFileIsNotListed) {
    EXPECT_EQ(ProviderIds(KeyWith({"unimdm.tsp", "velmora2.tsp", "xvelmora.tsp"}), "velmora.tsp"), Ids{});
    EXPECT_EQ(ProviderIds(ProviderKey{}, "velmora.tsp"), Ids{});
}

TEST(ProviderIds, AreAllOfAFileThatIsListedSeveralTimes) {
    EXPECT_EQ(ProviderIds(KeyWith({"velmora.tsp", "unimdm.tsp", "velmora.tsp"}), "velmora.tsp"), (Ids{1, 3}));
}

TEST(ProviderIds, FollowTheOrderOfTheNumbersBeyondTen) {
    std::vector<ByteString> files(12, "unimdm.tsp");
    files[2] = files[10] = "velmora.tsp";
    EXPECT_EQ(ProviderIds(KeyWith(files), "velmora.tsp"), (Ids{3, 11}));
}

TEST(ProviderIds, IgnoreCaseAndFolder) {
    EXPECT_EQ(ProviderIds(KeyWith({"Velmora.TSP"}), "velmora.tsp"), (Ids{1}));
    EXPECT_EQ(ProviderIds(KeyWith({"C:\\Windows\\System32\\velmora.tsp"}), "velmora.tsp"), (Ids{1}));
}

TEST(ProviderIds, LeaveOutWhatIsBehindTheEndOfTheList) {
    ProviderKey key = KeyWith({"unimdm.tsp", "velmora.tsp"});
    key.numbers["numproviders"] = 1;
    EXPECT_EQ(ProviderIds(key, "velmora.tsp"), Ids{});
    key.numbers.erase("numproviders");
    EXPECT_EQ(ProviderIds(key, "velmora.tsp"), Ids{});
}

TEST(ProviderIds, LeaveOutAnEntryWithoutAnId) {
    ProviderKey key = KeyWith({"velmora.tsp", "velmora.tsp"});
    key.numbers.erase("providerid0");
    EXPECT_EQ(ProviderIds(key, "velmora.tsp"), (Ids{2}));
}

TEST(ProviderIds, BearAnyNumberOfProviders) {
    ProviderKey key = KeyWith({"velmora.tsp"});
    key.numbers["numproviders"] = 0xFFFFFFFF;
    EXPECT_EQ(ProviderIds(key, "velmora.tsp"), (Ids{1}));
}

TEST(ProviderIds, TakeNoIndexThatIsNoNumber) {
    ProviderKey key = KeyWith({});
    key.numbers["numproviders"] = 5;
    for (const char* index : {"", "x", "1x", "-1", "99999999999"}) {
        key.texts[ByteString("providerfilename") + index] = "velmora.tsp";
        key.numbers[ByteString("providerid") + index] = 1;
    }
    EXPECT_EQ(ProviderIds(key, "velmora.tsp"), Ids{});
}

}  // namespace
}  // namespace velmora::ctl
