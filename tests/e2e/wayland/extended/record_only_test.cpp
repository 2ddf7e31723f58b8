// The overlay that shows markers only while a compositor's screen is cast.
#include <gmock/gmock.h>

#include <csignal>

#include "tests/e2e/wayland/extended/cast_session.h"
#include "tests/e2e/wayland/extended/kwin_rig.h"
#include "tests/e2e/wayland/extended/mutter_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

const PropertyDictionary kRecordOnly{{"onlyShowInRecord", true}, {"colorTracking", false}};

// On a compositor's rig.
template <typename Rig>
class RecordOnly : public Rig {
  protected:
    void startCasts() {
        auto casts = CastSession::start(this->session(), Deadline(this->kPatience));
        ASSERT_TRUE(casts) << casts.error().message;
        casts_ = std::move(*casts);
    }
    // `program`: for CastSession::offer().
    void expectMarkersWhileSomebodyReceives(const std::string& program,
                                            const std::function<bool()>& shows) {
        this->touchAt(0.25, 0.5);
        ASSERT_NO_FATAL_FAILURE(this->expectHidden(shows));
        auto cast = casts_->offer(program, Deadline(this->kPatience));
        ASSERT_TRUE(cast) << cast.error().message;
        ASSERT_NO_FATAL_FAILURE(this->expectHidden(shows)) << "while nobody receives";
        for (int round = 0; round < 2; ++round) {
            auto receiver = casts_->receive(cast->node);
            ASSERT_TRUE(receiver) << receiver.error().message;
            ASSERT_NO_FATAL_FAILURE(this->moveUntilShown(true, shows));
            EXPECT_TRUE(receiver->running());
            receiver->signal(SIGKILL);
            ASSERT_NO_FATAL_FAILURE(this->moveUntilShown(false, shows));
            ASSERT_NO_FATAL_FAILURE(this->expectHidden(shows));
        }
    }

  private:
    std::optional<CastSession> casts_;
};

using MutterRecordOnly = RecordOnly<Mutter>;
using KWinRecordOnly = RecordOnly<KWin>;

TEST_F(MutterRecordOnly, MarkersShowWhileSomebodyReceivesACast) {
    writeSettings(kRecordOnly);
    ASSERT_NO_FATAL_FAILURE(startMutter());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startCasts());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarkersWhileSomebodyReceives(SKAVLO_MUTTER_CAST, [&] {
        return windowPixel({326, 400}) != 0;
    }));
}

TEST_F(KWinRecordOnly, MarkersShowWhileSomebodyReceivesACast) {
    writeSettings(kRecordOnly);
    ASSERT_NO_FATAL_FAILURE(startKWin("1"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startCasts());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(untilPicture(isClean, "the background alone"));
    ASSERT_NO_FATAL_FAILURE(expectMarkersWhileSomebodyReceives(SKAVLO_KWIN_CAST, [&] {
        client().roundTrip();
        auto picture = captureKWin(*bus_, "Virtual-0");
        EXPECT_TRUE(picture) << picture.error().message;
        return picture && !isClean(*picture);
    }));
}

}  // namespace
}  // namespace skavlo
