#include "platform/linux/image/raster_client.h"

#include <unistd.h>

#include <chrono>
#include <string>

#include "platform/linux/image/raster_protocol.h"
#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"
#include "tests/unit/posix/leftovers.h"

namespace skavlo {

namespace {

using namespace std::chrono_literals;

// Octal escapes for the shell's printf.
std::string escaped(const void* data, std::size_t length) {
    std::string text;
    for (std::size_t at = 0; at < length; ++at) {
        const unsigned byte = static_cast<const unsigned char*>(data)[at];
        text += '\\';
        for (const int shift : {6, 3, 0}) text += static_cast<char>('0' + (byte >> shift & 7));
    }
    return text;
}

std::string sayHeader(const RasterHeader& header) {
    return "printf '" + escaped(&header, sizeof header) + "'\n";
}

}  // namespace

class RasterClientTest : public RasterTest {
  protected:
    RasterClientTest() { saveDrawing(drawQuarters, 20, 20, pathOf("a.png"), "png"); }
    // The answer of a program of this body in place of the real one.
    Answer answerOf(const std::string& body, std::chrono::milliseconds timeout = 30s) {
        RasterLimits limits;
        limits.timeout = timeout;
        RasterClient client(loop_, writeProgram("fake", body), limits);
        const Answer answer = image(client, pathOf("a.png"), 2);
        EXPECT_FALSE(hasChildren());
        return answer;
    }
};

TEST_F(RasterClientTest, ValidAnswerOfAnyProgramIsTaken) {
    const Answer answer = answerOf(sayHeader({kRasterMagic, 1, 2}) + "printf 'abc\\377efg\\377'");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->size, (PixelSize{2, 2}));
    EXPECT_EQ(pixelAt(*answer, 0, 0).blue, 'a');
    EXPECT_EQ(pixelAt(*answer, 0, 1).red, 'g');
    EXPECT_EQ(pixelAt(*answer, 1, 0).alpha, 0);
}

TEST_F(RasterClientTest, FailingChildHasNoPicture) {
    EXPECT_FALSE(answerOf("exit 0"));
    EXPECT_FALSE(answerOf("exit 1"));
    EXPECT_FALSE(answerOf("kill -SEGV $$"));
    EXPECT_FALSE(answerOf(sayHeader({kRasterMagic, 1, 1}) + "printf abcd; exit 1"));
    EXPECT_FALSE(answerOf(sayHeader({kRasterMagic, 1, 1}) + "printf abcd; kill -SEGV $$"));
}

TEST_F(RasterClientTest, WrongAnswersHaveNoPicture) {
    EXPECT_FALSE(answerOf("echo This is not what was asked for."));
    EXPECT_FALSE(answerOf("cat /dev/urandom"));
    EXPECT_FALSE(answerOf("cat /dev/zero"));
    EXPECT_FALSE(answerOf("printf SKVR"));
    EXPECT_FALSE(answerOf(sayHeader({kRasterMagic ^ 1, 1, 1}) + "printf abcd"));
    for (const auto& [width, height] :
         {std::pair{0, 1}, {1, 0}, {-1, 1}, {3, 1}, {1, 3}, {0x7fffffff, 0x7fffffff}})
        EXPECT_FALSE(answerOf(sayHeader({kRasterMagic, width, height}) + "cat /dev/zero"));
}

TEST_F(RasterClientTest, ShortAndLongAnswersHaveNoPicture) {
    const std::string header = sayHeader({kRasterMagic, 2, 1});
    EXPECT_TRUE(answerOf(header + "printf abcdefgh"));
    EXPECT_FALSE(answerOf(header + "printf abcdefg"));
    EXPECT_FALSE(answerOf(header + "printf abcdefghi"));
    EXPECT_FALSE(answerOf(header + "printf abcdefgh; cat /dev/zero"));
}

TEST_F(RasterClientTest, HangingChildIsKilledAtTheTimeout) {
    EXPECT_FALSE(answerOf("sleep 1000", 50ms));
    EXPECT_FALSE(answerOf("exec sleep 1000", 50ms));
    // After a whole answer, and with the pipe closed.
    EXPECT_FALSE(answerOf(sayHeader({kRasterMagic, 1, 1}) + "printf abcd; exec sleep 1000", 50ms));
    EXPECT_FALSE(answerOf(
        sayHeader({kRasterMagic, 1, 1}) + "printf abcd; exec >/dev/null; exec sleep 1000", 50ms));
    // The child is gone, but something it started holds the pipe.
    EXPECT_FALSE(answerOf("sleep 1000 & exit 0", 30s));
}

TEST_F(RasterClientTest, MissingProgramHasNoPicture) {
    RasterClient client(loop_, pathOf("missing"));
    EXPECT_FALSE(image(client, pathOf("a.png"), 20));
    RasterClient directory(loop_, directory_);
    EXPECT_FALSE(image(directory, pathOf("a.png"), 20));
}

TEST_F(RasterClientTest, SeveralRequestsAreUnderWayAtOnce) {
    constexpr int kRequests = 12;
    int answered = 0;
    for (int box = 1; box <= kRequests; ++box) {
        const auto done = [&answered, box](Answer answer) {
            ++answered;
            ASSERT_TRUE(answer);
            EXPECT_EQ(answer->size, (PixelSize{box, box}));
        };
        if (box % 2 == 0)
            client_.rasterizeImageFile(pathOf("a.png"), box, done);
        else
            client_.rasterizeText("x", box, 10, done);
    }
    EXPECT_TRUE(runUntil([&] { return answered == kRequests; }));
    EXPECT_FALSE(hasChildren());
}

TEST_F(RasterClientTest, DestroyedClientKillsAndCallsNothing) {
    int calls = 0;
    const std::string hanging = writeProgram("fake", "sleep 1000");
    {
        RasterClient client(loop_, hanging);
        RasterClient missing(loop_, pathOf("missing"));
        for (int request = 0; request < 3; ++request) {
            client.rasterizeImageFile(pathOf("a.png"), 20, [&](Answer) { ++calls; });
            client.rasterizeImageFile(pathOf("nothing"), 20, [&](Answer) { ++calls; });
            missing.rasterizeText("x", 20, 10, [&](Answer) { ++calls; });
        }
        loop_.context().poll_one();
        calls = 0;
        EXPECT_TRUE(hasChildren());
    }
    EXPECT_FALSE(hasChildren());
    loop_.context().poll();
    EXPECT_EQ(calls, 0);
}

TEST_F(RasterClientTest, CompletionMayDestroyTheClient) {
    auto client = std::make_unique<RasterClient>(loop_, SKAVLO_RASTER);
    bool done = false;
    int others = 0;
    client->rasterizeImageFile(pathOf("a.png"), 2000, [&](Answer) { ++others; });
    client->rasterizeImageFile(pathOf("missing"), 20, [&](Answer) {
        client.reset();
        done = true;
    });
    EXPECT_TRUE(runUntil([&] { return done; }));
    loop_.context().poll();
    EXPECT_EQ(others, 0);
    EXPECT_FALSE(hasChildren());
}

TEST_F(RasterClientTest, NothingIsLeftAfterManyRequests) {
    ASSERT_TRUE(image(pathOf("a.png"), 20));
    RasterLimits impatient;
    impatient.timeout = 20ms;
    RasterClient hanging(loop_, writeProgram("fake", "exec sleep 1000"), impatient);
    const std::size_t before = openDescriptors();
    int answered = 0;
    const auto done = [&answered](const Answer&) { ++answered; };
    constexpr int kRounds = 50;
    for (int round = 0; round < kRounds; ++round) {
        client_.rasterizeImageFile(pathOf("a.png"), 20, done);
        client_.rasterizeText("🍎", 20, 16, done);
        client_.rasterizeImageFile(pathOf("missing"), 20, done);
        hanging.rasterizeText("x", 20, 16, done);
        ASSERT_TRUE(runUntil([&] { return answered == 4 * (round + 1); }));
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

}  // namespace skavlo
