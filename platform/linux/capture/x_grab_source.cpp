#include "platform/linux/capture/x_grab_source.h"

#include <xcb/record.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>
#include <xcb/xproto.h>

#include <cstring>
#include <utility>
#include <vector>

namespace skavlo {

namespace {

constexpr std::uint8_t kShmGetImage = XCB_SHM_GET_IMAGE;
constexpr std::size_t kTimeBytes = 4;    // in front of each recorded request
constexpr std::size_t kHeaderBytes = 4;  // of a request
constexpr std::size_t kUnit = 4;         // lengths are counted in these
// Both requests have drawable, x, y, width and height at the same place.
constexpr std::size_t kDrawableAt = 4;
constexpr std::size_t kWidthAt = 12;
constexpr std::size_t kHeightAt = 14;
constexpr std::size_t kGetImageBytes = 20;
// A program that watches one pixel reads thousands of times a second: that must cost no touch its
// time.
constexpr double kRestSeconds = 0.05;

std::uint16_t read16(const std::uint8_t* at, bool swapped) {
    std::uint16_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return swapped ? __builtin_bswap16(value) : value;
}

std::uint32_t read32(const std::uint8_t* at, bool swapped) {
    std::uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return swapped ? __builtin_bswap32(value) : value;
}

xcb_record_range_t rangeOfGetImage() {
    xcb_record_range_t range{};
    range.core_requests = {XCB_GET_IMAGE, XCB_GET_IMAGE};
    return range;
}

xcb_record_range_t rangeOfShmGetImage(std::uint8_t opcode) {
    xcb_record_range_t range{};
    range.ext_requests = {{opcode, opcode}, {kShmGetImage, kShmGetImage}};
    return range;
}

bool hasRecord(xcb_connection_t* connection) {
    const auto* extension = xcb_get_extension_data(connection, &xcb_record_id);
    if (!extension || !extension->present) return false;
    const XcbReply<xcb_record_query_version_reply_t> version(xcb_record_query_version_reply(
        connection,
        xcb_record_query_version(connection, XCB_RECORD_MAJOR_VERSION, XCB_RECORD_MINOR_VERSION),
        nullptr));
    return version != nullptr;
}

}  // namespace

Result<std::unique_ptr<XGrabSource>> XGrabSource::open(AsioRunLoop& runLoop, XGrabOptions options) {
    Connection control(options.connect());
    Connection data(options.connect());
    if (xcb_connection_has_error(control.get()) != 0 || xcb_connection_has_error(data.get()) != 0) {
        return Error{"no X server can be reached"};
    }
    if (!hasRecord(control.get()) || !hasRecord(data.get())) {
        return Error{"the X server does not offer the extension RECORD"};
    }
    std::unique_ptr<XGrabSource> source(
        new XGrabSource(runLoop, std::move(options), std::move(control), std::move(data)));
    if (auto enabled = source->enable(); !enabled) return enabled.error();
    return source;
}

XGrabSource::XGrabSource(AsioRunLoop& runLoop, XGrabOptions options, Connection control,
                         Connection data)
    : runLoop_(runLoop),
      options_(std::move(options)),
      control_(std::move(control)),
      data_(std::move(data)) {
    if (const auto* shm = xcb_get_extension_data(control_.get(), &xcb_shm_id); shm && shm->present)
        shmOpcode_ = shm->major_opcode;
}

XGrabSource::~XGrabSource() {
    watch_.reset();  // before its descriptor is closed
}

Result<bool> XGrabSource::enable() {
    const xcb_record_context_t context = xcb_generate_id(control_.get());
    const xcb_record_client_spec_t everybody = XCB_RECORD_CS_ALL_CLIENTS;
    std::vector<xcb_record_range_t> ranges{rangeOfGetImage()};
    if (shmOpcode_ != 0) ranges.push_back(rangeOfShmGetImage(shmOpcode_));
    const auto created = xcb_record_create_context_checked(
        control_.get(), context, XCB_RECORD_H_TYPE_FROM_CLIENT_TIME, 1,
        static_cast<std::uint32_t>(ranges.size()), &everybody, ranges.data());
    if (const XcbReply<xcb_generic_error_t> error{xcb_request_check(control_.get(), created)}) {
        return Error{"the X server refuses to record"};
    }
    const auto enabled = xcb_record_enable_context(data_.get(), context);
    // The first reply says that all that is read from now on will be told; more come by and by.
    const XcbReply<xcb_record_enable_context_reply_t> begun(
        xcb_record_enable_context_reply(data_.get(), enabled, nullptr));
    if (!begun) return Error{"the X server refuses to record"};
    sequence_ = enabled.sequence;
    answers_ =
        std::make_unique<XcbWatch>(runLoop_.context(), control_.get(),
                                   XcbWatch::Handlers{.event = [](const xcb_generic_event_t&) {},
                                                      .drained = [this] { takeAnswers(); },
                                                      .lost = {}});
    listen();
    // Records that came along with the first reply wake nobody.
    runLoop_.async([this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) read();
    });
    return true;
}

void XGrabSource::listen() {
    watch_ = std::make_unique<DescriptorWatch>(
        runLoop_.context(), xcb_get_file_descriptor(data_.get()), [this] { look(); });
}

// What comes during the rest waits in the socket.
void XGrabSource::look() {
    largeSeen_ = false;
    read();
    if (!watch_ || largeSeen_) return;
    watch_.reset();
    restTimer_ = runLoop_.scheduledTimer(kRestSeconds, false, [this] { listen(); });
}

void XGrabSource::read() {
    // Polling for a reply does not read; polling for an event does.
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(data_.get())}) {
    }
    while (true) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(data_.get(), sequence_, &reply, &error) == 0) break;
        const XcbReply<xcb_generic_error_t> ownedError(error);
        const XcbReply<xcb_record_enable_context_reply_t> record(
            static_cast<xcb_record_enable_context_reply_t*>(reply));
        if (!record) return lost();
        handle(*record);
    }
    if (xcb_connection_has_error(data_.get()) != 0) return lost();
    if (!reads_.empty()) answers_->flush();
}

void XGrabSource::lost() {
    reads_.clear();
    watch_.reset();
    restTimer_.reset();
    timer_.reset();
    setCaptures(false);
}

// One record may hold several requests of one client.
void XGrabSource::handle(const xcb_record_enable_context_reply_t& record) {
    constexpr std::uint8_t kFromClient = 1;
    if (record.category != kFromClient) return;
    const std::uint8_t* at = xcb_record_enable_context_data(&record);
    const bool swapped = record.client_swapped != 0;
    auto left = static_cast<std::size_t>(xcb_record_enable_context_data_length(&record));
    while (left >= kTimeBytes + kHeaderBytes) {
        const std::size_t length = read16(at + kTimeBytes + 2, swapped) * kUnit;
        if (length < kGetImageBytes || left < kTimeBytes + length) return;
        handleRequest(record, read32(at, swapped), at + kTimeBytes);
        at += kTimeBytes + length;
        left -= kTimeBytes + length;
    }
}

void XGrabSource::handleRequest(const xcb_record_enable_context_reply_t& record, std::uint32_t time,
                                const std::uint8_t* request) {
    const bool swapped = record.client_swapped != 0;
    if (isOwn(record.xid_base, request, swapped)) return;
    const PixelSize size{read16(request + kWidthAt, swapped), read16(request + kHeightAt, swapped)};
    if (!GrabRate::isLarge(size, options_.screenSize())) return;
    largeSeen_ = true;
    const std::uint32_t drawable = read32(request + kDrawableAt, swapped);
    reads_.push_back({xcb_get_window_attributes(control_.get(), drawable), record.xid_base, time});
}

// What is no window is a picture aside: compositing managers that draw without an accelerator read
// the windows' pixmaps, even on another connection than made them.
void XGrabSource::takeAnswers() {
    while (!reads_.empty()) {
        const Read read = reads_.front();
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(control_.get(), read.question.sequence, &reply, &error) == 0) return;
        reads_.pop_front();
        const XcbReply<xcb_generic_error_t> ownedError(error);
        const XcbReply<xcb_get_window_attributes_reply_t> isWindow(
            static_cast<xcb_get_window_attributes_reply_t*>(reply));
        if (isWindow && rate_.grabbed(read.client, read.time)) hold();
    }
}

// A client that reads back what it has itself drawn aside does not look at the screen.
bool XGrabSource::isOwn(std::uint32_t client, const std::uint8_t* request, bool swapped) const {
    const std::uint32_t mask = xcb_get_setup(control_.get())->resource_id_mask;
    return (read32(request + kDrawableAt, swapped) & ~mask) == client;
}

void XGrabSource::hold() {
    heldUntil_ = std::chrono::steady_clock::now() + kHold;
    if (!timer_) check();
    setCaptures(true);
}

// One timer at a time: grabs only move the moment that it looks for.
void XGrabSource::check() {
    const std::chrono::duration<double> left = heldUntil_ - std::chrono::steady_clock::now();
    if (left.count() > 0) {
        timer_ = runLoop_.scheduledTimer(left.count(), false, [this] { check(); });
    } else {
        timer_.reset();
        setCaptures(false);
    }
}

}  // namespace skavlo
