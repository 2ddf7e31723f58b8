// One end of a cast through PipeWire, for tests: "produce NAME" offers moving pictures under this
// name and prints the node's number on a line, "consume NUMBER" receives those of a node, and "look
// NUMBER DESCRIPTOR X,Y..." besides writes there a line of the colours that those have at these
// places, "RRGGBB " each, whenever they are others. Runs until it is killed.
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Place {
    std::size_t x;
    std::size_t y;
};

struct Peer {
    pw_main_loop* loop = nullptr;
    pw_stream* stream = nullptr;
    bool told = false;
    std::vector<Place> places;
    int report = -1;
    std::string seen;
};

void stateChanged(void* data, pw_stream_state /*old*/, pw_stream_state state, const char* /*why*/) {
    auto& peer = *static_cast<Peer*>(data);
    if (state == PW_STREAM_STATE_ERROR) pw_main_loop_quit(peer.loop);
    if (state != PW_STREAM_STATE_PAUSED || peer.told) return;
    peer.told = true;
    std::printf("%u\n", pw_stream_get_node_id(peer.stream));
    std::fflush(stdout);
}

// Empty: this is no picture, or it has not all of the places.
std::string coloursOf(const spa_data& plane, const std::vector<Place>& places) {
    constexpr std::uint32_t kColour = 0xffffff;
    const bool whole = plane.data && plane.chunk && plane.chunk->size > 0 &&
                       plane.chunk->stride > 0 &&
                       (plane.chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) == 0;
    if (!whole) return {};
    std::string colours;
    for (const Place& place : places) {
        const std::size_t at = place.y * static_cast<std::size_t>(plane.chunk->stride) +
                               place.x * sizeof(std::uint32_t);
        if (at + sizeof(std::uint32_t) > plane.chunk->size) return {};
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, static_cast<const char*>(plane.data) + plane.chunk->offset + at,
                    sizeof pixel);
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "%06x ", pixel & kColour);
        colours += text.data();
    }
    return colours;
}

void look(Peer& peer, const spa_data& plane) {
    const std::string colours = coloursOf(plane, peer.places);
    if (colours.empty() || colours == peer.seen) return;
    peer.seen = colours;
    dprintf(peer.report, "%s\n", colours.c_str());
}

// What the pictures show matters only to who looks.
void process(void* data) {
    auto& peer = *static_cast<Peer*>(data);
    pw_buffer* buffer = pw_stream_dequeue_buffer(peer.stream);
    if (!buffer) return;
    spa_data& plane = buffer->buffer->datas[0];
    look(peer, plane);
    if (plane.chunk) plane.chunk->size = plane.maxsize;
    pw_stream_queue_buffer(peer.stream, buffer);
}

const spa_pod* offeredFormat(spa_pod_builder& builder) {
    constexpr std::uint32_t kSide = 64;
    constexpr std::uint32_t kRate = 25;
    spa_video_info_raw info{};
    info.format = SPA_VIDEO_FORMAT_BGRx;
    info.size = {kSide, kSide};
    info.framerate = {kRate, 1};
    return spa_format_video_raw_build(&builder, SPA_PARAM_EnumFormat, &info);
}

// Whatever size and rate there is.
const spa_pod* wantedFormat(spa_pod_builder& builder) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_prop(&builder, SPA_FORMAT_mediaType, 0);
    spa_pod_builder_id(&builder, SPA_MEDIA_TYPE_video);
    spa_pod_builder_prop(&builder, SPA_FORMAT_mediaSubtype, 0);
    spa_pod_builder_id(&builder, SPA_MEDIA_SUBTYPE_raw);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_id(&builder, SPA_VIDEO_FORMAT_BGRx);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

bool connect(Peer& peer, bool produce, std::uint32_t target) {
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const spa_pod* format = produce ? offeredFormat(builder) : wantedFormat(builder);
    const int flags = PW_STREAM_FLAG_MAP_BUFFERS | (produce ? 0 : PW_STREAM_FLAG_AUTOCONNECT);
    return pw_stream_connect(peer.stream, produce ? PW_DIRECTION_OUTPUT : PW_DIRECTION_INPUT,
                             target, static_cast<pw_stream_flags>(flags), &format, 1) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const bool produce = std::strcmp(argv[1], "produce") == 0;
    Peer peer;
    if (argc > 3) peer.report = std::atoi(argv[3]);
    for (int i = 4; i < argc; ++i) {
        char* comma = nullptr;
        const std::size_t x = std::strtoul(argv[i], &comma, 10);
        peer.places.push_back({x, std::strtoul(comma + 1, nullptr, 10)});
    }
    peer.told = std::strcmp(argv[1], "look") == 0;
    pw_init(nullptr, nullptr);
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = &stateChanged;
    events.process = &process;
    peer.loop = pw_main_loop_new(nullptr);
    pw_properties* properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                  produce ? "Playback" : "Capture", nullptr);
    pw_properties_set(properties, PW_KEY_MEDIA_CLASS,
                      produce ? "Stream/Output/Video" : "Stream/Input/Video");
    pw_properties_set(properties, PW_KEY_NODE_NAME, produce ? argv[2] : "consumer");
    peer.stream =
        pw_stream_new_simple(pw_main_loop_get_loop(peer.loop), "cast", properties, &events, &peer);
    const std::uint32_t target =
        produce ? PW_ID_ANY : static_cast<std::uint32_t>(std::stoul(argv[2]));
    if (!peer.stream || !connect(peer, produce, target)) return 1;
    pw_main_loop_run(peer.loop);
    return 1;
}
