#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "card_data.h"
#include "identity/card_read.h"
#include "identity/photo.h"
#include "link/link_state.h"
#include "platform/module.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;

// Beside the test program: behaves as the ".wlt" file says (see component/).
constexpr std::string_view scripted = "GetBmpScripted.dll";

Bytes script(std::string_view text) { return Bytes(text.begin(), text.end()); }

void write_file(const fs::path& path, std::string_view text) { std::ofstream(path, std::ios::binary) << text; }

TEST(SavePhotoFile, EveryGetBmpOutcome) {
    struct Case {
        std::string_view script;
        int result;
    };
    const std::vector<Case> cases{
        {"1 bmp", 0},  {"-2 bmp", 0}, {"12345 bmp", 0}, {"0", -2}, {"-1", -3}, {"-2", -4},
        {"-3", -5},    {"-4", -6},    {"-5", -7},       {"-6", -8}, {"-7", -110}, {"1", -110},
        {"99", -110},
    };
    for (const Case& c : cases) {
        TempDir dir;
        const std::string photo = (dir.path() / "photo.bmp").string();
        EXPECT_EQ(identity::SavePhotoFile(script(c.script), photo, scripted), c.result) << c.script;
        EXPECT_EQ(file_text(dir.path() / "sfz.wlt"), c.script) << "the .wlt stays";
        EXPECT_FALSE(fs::exists(dir.path() / "sfz.bmp"));
        if (c.result == 0)
            EXPECT_EQ(file_text(photo), (dir.path() / "sfz.wlt").string() + "\n" + std::string(c.script));
        else
            EXPECT_FALSE(fs::exists(photo));
    }
}

// Where the photo goes: missing folders are made, the working ".bmp" itself may be
// the target, an earlier photo is replaced, a bare name means the current folder.
TEST(SavePhotoFile, PhotoPlaces) {
    TempDir dir;
    const fs::path deep = dir.path() / "a" / "b" / "photo.bmp";
    EXPECT_EQ(identity::SavePhotoFile(script("1 bmp"), deep.string(), scripted), 0);
    EXPECT_EQ(file_text(deep), (dir.path() / "a" / "b" / "sfz.wlt").string() + "\n1 bmp");

    const fs::path itself = dir.path() / "sfz.bmp";
    EXPECT_EQ(identity::SavePhotoFile(script("1 bmp"), itself.string(), scripted), 0);
    EXPECT_EQ(file_text(itself), (dir.path() / "sfz.wlt").string() + "\n1 bmp");

    write_file(deep, "earlier photo");
    EXPECT_EQ(identity::SavePhotoFile(script("2 bmp"), deep.string(), scripted), 0);
    EXPECT_EQ(file_text(deep), (dir.path() / "a" / "b" / "sfz.wlt").string() + "\n2 bmp");

    const fs::path before = fs::current_path();
    fs::current_path(dir.path());
    const int result = identity::SavePhotoFile(script("1 bmp"), "photo.bmp", scripted);
    fs::current_path(before);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(file_text(dir.path() / "photo.bmp"), "sfz.wlt\n1 bmp");
}

TEST(SavePhotoFile, OldFilesAndFoldersOfTheWorkingNamesAreRemovedFirst) {
    TempDir dir;
    write_file(dir.path() / "sfz.bmp", "old picture");
    write_file(dir.path() / "sfz.wlt", "old data that is longer than the new");
    fs::create_directory(dir.path() / "photo.bmp");  // an empty folder where the photo goes
    const std::string photo = (dir.path() / "photo.bmp").string();

    // The old .bmp must not pass for a decoded photo.
    EXPECT_EQ(identity::SavePhotoFile(script("-1"), photo, scripted), -3);
    EXPECT_FALSE(fs::exists(dir.path() / "sfz.bmp"));
    EXPECT_FALSE(fs::exists(photo));
    EXPECT_EQ(file_text(dir.path() / "sfz.wlt"), "-1");
}

TEST(DecodeWltFile, ComponentSearch) {
    TempDir dir;
    const std::string wlt = (dir.path() / "sfz.wlt").string();
    write_file(wlt, "-1");
    EXPECT_EQ(identity::DecodeWltFile(wlt, scripted), -1) << "found in the own folder";
    EXPECT_EQ(identity::DecodeWltFile(wlt, "GetBmpNoEntry.dll"), 0) << "no GetBmp in it";
    EXPECT_EQ(identity::DecodeWltFile(wlt, "NoSuchPhotoComponent.dll"), 0) << "in neither place";
    // The copy in the own folder answers 99; the one found by name reads the file.
    EXPECT_EQ(identity::DecodeWltFile(wlt, "GetBmpOnPath.dll"), -1) << "found by name first";
}

TEST(IDCardDecodeMsg, PhotoAndFingerComeFromTheirPartsOfTheReply) {
    TempDir dir;
    const std::string photo = (dir.path() / "out" / "photo.bmp").string();
    const Bytes reply = read_reply_data({.mode = 1, .text = ordinary_card(), .photo = script("1 bmp"), .finger = {0x0F, 0xA0}});
    identity::CardTexts texts;
    const auto outcome = identity::IDCardDecodeMsg(1, reply, photo.c_str(), texts, scripted);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.message, gbk("读二代证成功"));
    EXPECT_EQ(texts.base_info, ordinary_card_text());
    EXPECT_EQ(texts.finger_info, "0FA0");
    EXPECT_EQ(file_text(photo), (dir.path() / "out" / "sfz.wlt").string() + "\n1 bmp");
}

TEST(IDCardDecodeMsg, MessagesOfThePhotoResults) {
    struct Case {
        std::string_view script;
        int result;
        const char* message;
    };
    const std::vector<Case> cases{
        {"0", -2, "调用sdtapi.dll错误"}, {"-2", -4, "wlt文件后缀错误"}, {"-3", -5, "wlt文件打开错误"},
        {"-4", -6, "wlt文件格式错误"},   {"-6", -8, "设备连接错误"},   {"-1", -3, "其他错误"},
        {"-5", -7, "其他错误"},          {"1", -110, "其他错误"},
    };
    for (const Case& c : cases) {
        TempDir dir;
        const std::string photo = (dir.path() / "photo.bmp").string();
        identity::CardTexts texts;
        const auto outcome = identity::IDCardDecodeMsg(
            0, read_reply_data({.text = ordinary_card(), .photo = script(c.script)}), photo.c_str(), texts, scripted);
        EXPECT_EQ(outcome.result, c.result) << c.script;
        EXPECT_EQ(outcome.message, gbk(c.message)) << c.script;
    }
}

TEST(IDReadCard, PhotoComponentInNeitherPlaceGivesMinus2AndNoOutput) {
    if (platform::Module::load(identity::photo_library))
        GTEST_SKIP() << "a photo component is installed on the system's library path";
    ScriptedTerminal terminal;
    const int handle = terminal.open_hid_link();
    terminal.respond = [](const Bytes&) {
        return make_reply(0, read_reply_data({.text = ordinary_card(), .photo = script("1 bmp")}));
    };

    TempDir dir;
    // 254 characters pass the length check.
    const fs::path folder = dir.path() / std::string(254 - dir.path().string().size() - 11, 'f');
    const std::string photo = (folder / "photo.bmp").string();
    ASSERT_EQ(photo.size(), 254u);
    char base[16] = "untouched", finger[16] = "untouched";
    EXPECT_EQ(IDReadCard(handle, 0, photo.c_str(), base, finger), -2);
    EXPECT_STREQ(base, "untouched");
    EXPECT_STREQ(finger, "untouched");
    EXPECT_EQ(file_text(folder / "sfz.wlt"), "1 bmp");
}

}  // namespace
}  // namespace qz::test
