#pragma once

#include <span>
#include <string_view>

#include "config/byte_string.h"

namespace velmora::ctl {

// What each of the provider's settings may hold, so that a wrong value is refused before it is stored, and one that is
// stored already can be named when the provider fails over it.

enum class SettingKind { kText, kPassword, kPort, kFlag, kNumber, kPath, kGuid };

struct SettingRule {
    std::string_view name;  // of the registry value
    SettingKind kind;
    std::string_view defaultText;  // what applies while the value is missing or empty
    std::string_view meaning;      // in a few words
};

// All eleven, in the order in which the provider loads them.
std::span<const SettingRule> SettingRules();

// The rule of one setting; null when there is no such setting.
const SettingRule* FindSettingRule(std::string_view name);

struct CheckedSetting {
    ByteString stored;   // the text to store
    ByteString error;    // why the value is refused, as a sentence; empty when it is not
    ByteString warning;  // what somebody who stores it should know; mostly empty
};

// Checks a value that somebody wants to store. A flag takes 0/1, off/on, no/yes and false/true in any case and is
// stored as "0" or "1"; a number must be a number as a whole. An empty value is always right: the default applies then.
CheckedSetting CheckSetting(const SettingRule& rule, std::string_view value);

struct SettingFault {
    ByteString problem;         // what is wrong, such as "is no number"; empty when nothing is
    bool stopsLoading = false;  // the provider fails over it while it starts; else it starts, but to no use
};

// What is wrong with a text found in the registry (empty for a missing value). This is the provider's own, wider rule:
// a number may have white space before it and anything behind it.
SettingFault FindSettingFault(const SettingRule& rule, std::string_view stored);

// The fault as a sentence: port "abc" is no number.
ByteString FaultSentence(const SettingRule& rule, std::string_view stored, const SettingFault& fault);

// The command that mends a setting.
ByteString FixCommand(const SettingRule& rule);

}  // namespace velmora::ctl
