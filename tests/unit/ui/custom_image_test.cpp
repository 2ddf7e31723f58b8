#include "settings/image_import.h"
#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

constexpr std::size_t kLimit = 1'048'576;

TEST(ShrinkFactors, AreNineByRepeatedSubtraction) {
    EXPECT_EQ(shrinkFactors(),
              (std::vector{0.9, 0.8, 0.7000000000000001, 0.6000000000000001, 0.5000000000000001,
                           0.40000000000000013, 0.30000000000000016, 0.20000000000000015,
                           0.10000000000000014}));
}

class CustomImage : public SettingsFixture {
  protected:
    void put(const std::string& path, const std::string& contents) {
        files.files.writeAtomically(path, contents);
    }
    [[nodiscard]] std::optional<std::string> image() const {
        return files.files.read(directory.customImageFile());
    }
};

TEST_F(CustomImage, TheRowOpensThePicker) {
    load({{"displayMode", 1}});
    controller->skv_presentImagePicker();
    EXPECT_EQ(log.whats(), Strings{"picker"});
}

TEST_F(CustomImage, AFileUpToTheLimitIsStoredByteForByte) {
    load();
    for (const std::size_t size : {std::size_t{900} << 10U, kLimit}) {
        const std::string jpeg = "\xff\xd8\xff" + std::string(size - 3, '\0');
        put("/photo.jpg", jpeg);
        controller->documentPicker({"/photo.jpg"});
        EXPECT_EQ(image(), jpeg);
    }
    EXPECT_TRUE(imageShrinker.requests.empty());
    EXPECT_EQ(count("importing"), 0);
}

TEST_F(CustomImage, AnEmptyFileIsStoredLikeAnyOther) {
    load();
    put("/empty", "");
    controller->documentPicker({"/empty"});
    EXPECT_EQ(image(), "");
}

TEST_F(CustomImage, IsStoredSavedAndConfirmedInThisOrder) {
    load();
    put(directory.customImageFile(), "old");
    put("/photo", "new");
    controller->skv_overlayEnabled = true;
    controller->documentPicker({"/photo"});
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{"unlink image", "write image", "alert 成功", kWrite, kReload}));
    EXPECT_EQ(image(), "new");
    EXPECT_EQ(stored().at("imagePath"), PropertyValue(directory.customImageFile()));
}

TEST_F(CustomImage, TheFirstImageHasNothingToRemove) {
    load();
    put("/photo", "new");
    controller->documentPicker({"/photo"});
    EXPECT_EQ(log.whats(), (Strings{"write image", "alert 成功"}));
}

TEST_F(CustomImage, OnlyTheFirstPathCounts) {
    load();
    put("/second", "second");
    controller->documentPicker({"/first", "/second"});
    EXPECT_EQ(image(), std::nullopt);
    put("/first", "first");
    controller->documentPicker({"/first", "/second"});
    EXPECT_EQ(image(), "first");
}

TEST_F(CustomImage, NoPathAndNoFileChangeNothingSilently) {
    load();
    controller->documentPicker({});
    controller->documentPicker({"/missing"});
    loop.runPosted();
    EXPECT_TRUE(log.events.empty());
    EXPECT_EQ(settings().at("imagePath"), PropertyValue(""));
}

TEST_F(CustomImage, AFileThatCannotBeReadChangesNothingSilently) {
    load();
    put("/photo", "new");
    files.unreadable = true;
    controller->documentPicker({"/photo"});
    loop.runPosted();
    EXPECT_TRUE(log.events.empty());
}

TEST_F(CustomImage, ALargerFileIsMadeSmaller) {
    load();
    put(directory.customImageFile(), "old");
    put("/photo", std::string(kLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    EXPECT_EQ(log.whats(), Strings{"importing"});
    ASSERT_EQ(imageShrinker.requests.size(), 1U);
    EXPECT_EQ(imageShrinker.requests[0].path, "/photo");
    EXPECT_EQ(imageShrinker.requests[0].factors, shrinkFactors());
    EXPECT_EQ(imageShrinker.requests[0].limitBytes, kLimit);
    EXPECT_EQ(image(), "old");
    imageShrinker.answer("png");
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{"importing", "imported", "unlink image", "write image",
                                    "alert 成功", kWrite}));
    EXPECT_EQ(image(), "png");
}

TEST_F(CustomImage, ASmallerImageAboveTheLimitIsStoredAnyway) {
    load();
    put("/photo", std::string(kLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    const std::string large(kLimit + 1, 'y');
    imageShrinker.answer(large);
    EXPECT_EQ(image(), large);
}

TEST_F(CustomImage, AnUndecodableFileRemovesTheOldImageAndSaysSuccess) {
    load();
    put(directory.customImageFile(), "old");
    put("/photo", std::string(kLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    imageShrinker.answer("");
    loop.runPosted();
    EXPECT_EQ(log.whats(),
              (Strings{"importing", "imported", "unlink image", "alert 成功", kWrite}));
    EXPECT_EQ(image(), std::nullopt);
    EXPECT_EQ(stored().at("imagePath"), PropertyValue(directory.customImageFile()));
}

TEST_F(CustomImage, AFailedWriteSaysSuccessToo) {
    load();
    put("/photo", "new");
    files.full = true;
    controller->documentPicker({"/photo"});
    EXPECT_EQ(view.alerts.size(), 1U);
    EXPECT_EQ(settings().at("imagePath"), PropertyValue(directory.customImageFile()));
}

TEST_F(CustomImage, ImportingTwiceReplacesTheFirstUnderTheSamePath) {
    load();
    put("/a", "first");
    put("/b", "second");
    controller->documentPicker({"/a"});
    const PropertyValue path = settings().at("imagePath");
    controller->documentPicker({"/b"});
    EXPECT_EQ(image(), "second");
    EXPECT_EQ(settings().at("imagePath"), path);
}

TEST_F(CustomImage, WhatIsPickedDuringAnImportIsLeftAlone) {
    load();
    put("/photo", std::string(kLimit + 1, 'x'));
    put("/small", "small");
    controller->documentPicker({"/photo"});
    controller->documentPicker({"/photo"});
    controller->documentPicker({"/small"});
    EXPECT_EQ(imageShrinker.requests.size(), 1U);
    EXPECT_EQ(log.whats(), Strings{"importing"});
    imageShrinker.answer("png");
    EXPECT_EQ(image(), "png");
    controller->documentPicker({"/small"});
    EXPECT_EQ(image(), "small");
}

TEST_F(CustomImage, AnImportAfterARestoreIsNotMistakenForTheOneBefore) {
    load();
    put("/photo", std::string(kLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    controller->skv_restoreDefaults();
    controller->documentPicker({"/photo"});
    imageShrinker.answer("before");
    EXPECT_EQ(image(), std::nullopt);
    imageShrinker.answer("after");
    EXPECT_EQ(image(), "after");
}

TEST_F(CustomImage, AnImageThatArrivesAfterTheEndIsDropped) {
    load();
    put("/photo", std::string(kLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    controller.reset();
    imageShrinker.answer("png");
    EXPECT_EQ(image(), std::nullopt);
}

TEST_F(CustomImage, TheAlertsButtonReloadsTheTable) {
    load({{"isEnglish", true}});
    put("/photo", "new");
    controller->documentPicker({"/photo"});
    ASSERT_EQ(view.alerts.size(), 1U);
    const Alert& alert = view.alerts[0];
    EXPECT_EQ(alert.title, "Success");
    EXPECT_EQ(alert.message, "Custom image loaded!");
    ASSERT_EQ(alert.actions.size(), 1U);
    EXPECT_EQ(alert.actions[0].title, "OK");
    EXPECT_EQ(alert.actions[0].style, AlertActionStyle::standard);
    EXPECT_EQ(count("reloadData"), 0);
    alert.actions[0].handler();
    loop.runPosted();
    EXPECT_EQ(count("reloadData"), 1);
}

TEST_F(CustomImage, RestoreRemovesIt) {
    load();
    put("/photo", "new");
    controller->documentPicker({"/photo"});
    controller->skv_restoreDefaults();
    EXPECT_EQ(image(), std::nullopt);
    EXPECT_EQ(settings().at("imagePath"), PropertyValue(""));
}

}  // namespace
}  // namespace skavlo
