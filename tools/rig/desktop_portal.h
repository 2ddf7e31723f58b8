// A desktop's settings as programs ask for them on the message bus, and its way to open links.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/result.h"

namespace skavlo::rig {

// Serves the appearance on the message bus of this process's environment until it ends.
class DesktopPortal {
  public:
    static Result<DesktopPortal> start(bool dark);

    // Tells every program of the change.
    void setDark(bool dark);
    // What programs asked it to open, oldest first.
    [[nodiscard]] std::vector<std::string> openedLinks() const;

    DesktopPortal(DesktopPortal&&) noexcept;
    DesktopPortal& operator=(DesktopPortal&&) noexcept;
    ~DesktopPortal();

  private:
    struct Service;
    explicit DesktopPortal(std::unique_ptr<Service> service);

    std::unique_ptr<Service> service_;
};

}  // namespace skavlo::rig
