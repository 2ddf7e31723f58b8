// An Xorg of its own for one test: dummy screen, one inputtest touchscreen.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>

namespace skavlo::test {

class XServer {
  public:
    // Null with a reason when the server is not installed or does not start.
    static std::unique_ptr<XServer> start(bool touchscreen, std::string& reason);
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 720;

    [[nodiscard]] xcb_connection_t* connect() const;
    [[nodiscard]] const std::string& display() const { return display_; }

    // Axis values 0 to 65535; return when the server has taken the event in.
    void touchBegin(std::uint32_t id, double x, double y);
    void touchUpdate(std::uint32_t id, double x, double y);
    void touchEnd(std::uint32_t id, double x, double y);

    // As a user would with xinput and a mouse; return when the server has done it.
    void setTransformation(const char* device, const float (&matrix)[9]);
    void setNode(const char* device, const std::string& node);
    void setEnabled(const char* device, bool enabled);
    void moveMouse(int x, int y);
    void button(int physicalButton, bool pressed);
    void setButtonMapping(int physicalPrimary);
    // The server has done what all clients asked for before.
    void sync();
    void kill();

  private:
    XServer() = default;
    bool launch(bool touchscreen, std::string& reason);
    bool connectTouchscreen();
    void touch(std::uint32_t id, std::uint32_t type, double x, double y);
    std::uint16_t deviceId(const char* name);
    void changeProperty(const char* device, const char* property, const char* type,
                        std::uint8_t format, std::uint32_t items, const void* data);
    xcb_atom_t atom(const char* name);

    std::string directory_;
    std::string display_;
    int pid_ = -1;
    int touchscreen_ = -1;  // stays open: the driver serves one connection in a server's life
    xcb_connection_t* control_ = nullptr;
};

}  // namespace skavlo::test
