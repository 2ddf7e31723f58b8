// What the doctor finds, as data.
#pragma once

#include <string>
#include <vector>

namespace skavlo::doctor {

// In Chinese and in English.
struct Text {
    std::string zh;
    std::string en;
};

enum class Level { ok, warn, fail };
// "ok", "warn", "fail".
const char* name(Level level);

struct Finding {
    std::string check;  // in a word, the same in every language
    Level level = Level::ok;
    Text what = {};
    Text advice = {};  // what to do about it; empty: nothing
};
using Findings = std::vector<Finding>;

}  // namespace skavlo::doctor
