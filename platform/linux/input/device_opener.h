#pragma once

namespace skavlo {

// Opens input devices. Apart from reading them, so that another process may hold the rights.
class DeviceOpener {
  public:
    virtual ~DeviceOpener() = default;
    // `flags` as for open(2), non-blocking. A descriptor, or a negated errno.
    virtual int open(const char* path, int flags) = 0;
    virtual void close(int descriptor) = 0;
};

// With the process's own rights; a device it may only read is opened for reading.
class DirectDeviceOpener final : public DeviceOpener {
  public:
    int open(const char* path, int flags) override;
    void close(int descriptor) override;
};

}  // namespace skavlo
