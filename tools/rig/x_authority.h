// The secret that keeps a private X server private.
#pragma once

#include <string>

#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo::rig {

// An authority file that lives in memory: it ends with the process, however that ends, and only
// the same user's processes and root can read it. Its one entry fits every address and display
// number, as the number is not known before the server runs.
class XAuthority {
  public:
    static Result<XAuthority> create();

    [[nodiscard]] const std::string& cookie() const { return cookie_; }
    // To be used while this process lives.
    [[nodiscard]] std::string path() const;

  private:
    XAuthority(std::string cookie, FileDescriptor file)
        : cookie_(std::move(cookie)), file_(std::move(file)) {}

    std::string cookie_;
    FileDescriptor file_;
};

}  // namespace skavlo::rig
