// The machine and the session as the checks see them.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace skavlo::doctor {

struct Surroundings {
    // The value of an environment variable; null: there is none. Libraries read the process's own
    // environment, from which this should not differ.
    std::function<const char*(const char* name)> variable;
    uid_t user = 0;                // in force
    std::string libraryPrefix;     // with its trailing slash
    std::string runDirectory;      // without
    std::string programDirectory;  // where the product's programs lie, without
    // What the folder of the helper's owner and group should be; others in tests.
    uid_t root = 0;
    gid_t mobileGroup = 501;

    [[nodiscard]] std::string caches() const { return libraryPrefix + "Caches"; }
    [[nodiscard]] std::string notify() const { return runDirectory + "/notify"; }
    [[nodiscard]] std::string persona() const { return programDirectory + "/skavlo-persona"; }
    [[nodiscard]] std::string raster() const { return programDirectory + "/skavlo-raster"; }
    // Empty without the variable.
    [[nodiscard]] std::string value(const char* name) const {
        const char* found = variable(name);
        return found ? found : "";
    }
};

}  // namespace skavlo::doctor
