// The touch screen of a private X server, played by the "inputtest" driver of Xorg.
#pragma once

#include <map>
#include <string>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo::rig {

// Positions are in pixels of the root window; the device reports them as 0 to 65535 on both axes.
// The driver serves one connection in a server's life and keeps a core busy once that is closed,
// so the device belongs to its server and ends after it.
class TouchDevice {
  public:
    static Result<TouchDevice> connect(const std::string& socketPath, PixelSize screen,
                                       const Deadline& deadline);

    void setScreen(PixelSize screen) { screen_ = screen; }
    // Each is false when the server is gone. The ids are the caller's; at most kTouchContacts at
    // a time. An end comes at the place of the last report; of an id that does not touch: nothing.
    bool begin(unsigned id, Point pixel);
    bool update(unsigned id, Point pixel);
    bool end(unsigned id);
    // True once the server has processed everything so far; false at the deadline.
    bool waitForSync(const Deadline& deadline);

  private:
    TouchDevice(FileDescriptor socket, PixelSize screen)
        : socket_(std::move(socket)), screen_(screen) {}
    bool sendVersion(const Deadline& deadline);
    bool sendTouch(unsigned id, unsigned type, Point pixel);
    [[nodiscard]] bool send(const void* message, std::size_t length) const;
    // Reads whole messages until one of the type comes.
    bool readUntil(unsigned type, const Deadline& deadline);

    FileDescriptor socket_;
    PixelSize screen_;
    std::map<unsigned, Point> touching_;
    std::string received_;  // the beginning of a message whose rest is still to come
};

}  // namespace skavlo::rig
