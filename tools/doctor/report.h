// How findings are told.
#pragma once

#include <string>

#include "tools/doctor/finding.h"

namespace skavlo::doctor {

enum class Language { english, chinese };
// From the first of LC_ALL, LC_MESSAGES and LANG that is set; null stands for not set.
Language languageOf(const char* all, const char* messages, const char* lang);

// One line each, advice behind an arrow.
std::string asText(const Findings& findings, Language language);
// One object: "status", the worst level, and "findings", with "check", "level", "text" and, where
// there is some, "advice" of each. Valid UTF-8 whatever the texts hold.
std::string asJson(const Findings& findings, Language language);

constexpr int kExitFail = 1;
// 0, or kExitFail when a finding is a fail.
int exitStatus(const Findings& findings);

}  // namespace skavlo::doctor
