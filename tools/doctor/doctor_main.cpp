// skavlo-doctor: says what of Skavlo works here, and what to do about the rest.
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/doctor/checks.h"
#include "tools/doctor/report.h"

namespace {

constexpr int kExitUsage = 2;

constexpr const char* kUsage =
    "Usage: skavlo-doctor [--json]\n"
    "\n"
    "Says in a line each what of Skavlo works on this machine and in this session: ok, warn or\n"
    "fail, and what to do about it. In Chinese or English by the locale.\n"
    "\n"
    "  --json     one JSON object instead\n"
    "  --help     print this text\n"
    "  --version  print the version\n"
    "\n"
    "Exit status: 0, 1 when something fails, 2 when the arguments are wrong.\n";

std::string ownDirectory() {
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    const std::string path(self, length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(0, path.rfind('/'));
}

// Servers that hang would make this hang as well: their libraries wait without an end.
void giveUp(int /*signal*/) {
    constexpr char kMessage[] = "skavlo-doctor: a server does not answer\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
    _exit(skavlo::doctor::kExitFail);
}

int examine(bool json) {
    using namespace skavlo::doctor;
    const Surroundings surroundings{.variable = [](const char* name) { return std::getenv(name); },
                                    .user = geteuid(),
                                    .libraryPrefix = SKAVLO_LIBRARY_PREFIX,
                                    .runDirectory = SKAVLO_RUN_DIRECTORY,
                                    .programDirectory = ownDirectory()};
    Findings findings;
    for (const Check& check : allChecks()) {
        for (Finding& finding : check(surroundings)) findings.push_back(std::move(finding));
    }
    const Language language =
        languageOf(std::getenv("LC_ALL"), std::getenv("LC_MESSAGES"), std::getenv("LANG"));
    const std::string report = json ? asJson(findings, language) : asText(findings, language);
    std::fputs(report.c_str(), stdout);
    return std::fflush(stdout) == 0 ? exitStatus(findings) : kExitFail;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    const std::string argument = argc == 2 ? argv[1] : "";
    if (argument == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argument == "--version") {
        std::puts("skavlo-doctor " SKAVLO_VERSION);
        return 0;
    }
    if (argc > 2 || (argc == 2 && argument != "--json")) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    constexpr unsigned kPatienceSeconds = 30;
    std::signal(SIGALRM, &giveUp);
    alarm(kPatienceSeconds);
    return examine(argument == "--json");
}
