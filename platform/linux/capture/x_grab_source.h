#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>

#include "platform/linux/capture/capture_source.h"
#include "platform/linux/capture/grab_rate.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/descriptor_watch.h"
#include "platform/linux/loop/xcb_watch.h"
#include "platform/linux/xcb_reply.h"
#include "platform/result.h"

struct xcb_record_enable_context_reply_t;

namespace skavlo {

struct XGrabOptions {
    // A fresh connection to the X server, in error when there is none.
    std::function<xcb_connection_t*()> connect;
    std::function<PixelSize()> screenSize;
};

// Programs that read the screen's pixels from the X server, again and again: the server's RECORD
// extension tells of each GetImage, with shared memory or without, and of nothing else.
class XGrabSource final : public CaptureSource {
  public:
    // From a client's last read to the moment when it counts as having stopped.
    static constexpr std::chrono::milliseconds kHold{1500};

    // An error when there is no server or it does not offer the extension.
    static Result<std::unique_ptr<XGrabSource>> open(AsioRunLoop& runLoop, XGrabOptions options);
    ~XGrabSource() override;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    // A large read, which counts if what was read is a window.
    struct Read {
        xcb_get_window_attributes_cookie_t question;
        std::uint32_t client;
        std::uint32_t time;
    };

    // Records arrive on a connection that can do nothing else meanwhile; the other one made the
    // context, keeps it alive and asks what the drawables are.
    XGrabSource(AsioRunLoop& runLoop, XGrabOptions options, Connection control, Connection data);
    Result<bool> enable();
    void listen();
    // Reads what has come, and rests when it was of no importance.
    void look();
    void read();
    void lost();
    void handle(const xcb_record_enable_context_reply_t& record);
    void handleRequest(const xcb_record_enable_context_reply_t& record, std::uint32_t time,
                       const std::uint8_t* request);
    void takeAnswers();
    [[nodiscard]] bool isOwn(std::uint32_t client, const std::uint8_t* request, bool swapped) const;
    void hold();
    void check();

    AsioRunLoop& runLoop_;
    XGrabOptions options_;
    Connection control_;
    Connection data_;
    unsigned sequence_ = 0;  // of the request whose replies are the records
    std::uint8_t shmOpcode_ = 0;
    GrabRate rate_;
    std::deque<Read> reads_;
    bool largeSeen_ = false;
    std::chrono::steady_clock::time_point heldUntil_;
    std::unique_ptr<Timer> timer_;
    std::unique_ptr<Timer> restTimer_;
    std::unique_ptr<DescriptorWatch> watch_;
    std::unique_ptr<XcbWatch> answers_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
