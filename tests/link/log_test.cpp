#include <gtest/gtest.h>

#include <fstream>

#include "link/log.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {
namespace fs = std::filesystem;

class Log : public ::testing::Test {
protected:
    TempDir dir;
    fs::path root = dir.path() / "QZlog";
    ScopedEnv env{"QZ_32_LOG_ROOT", root.string()};
    ScriptedTerminal os;
};

TEST_F(Log, NothingIsWrittenWithoutTheRoot) {
    link::write_log("hello");
    close_device(-1);
    EXPECT_FALSE(fs::exists(root));
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST_F(Log, RecordBytesOnDisk) {
    fs::create_directory(root);
    os.platform.set_local_time({2026, 11, 23, 9, 5, 3, 7});
    link::write_log("a\nb");
    EXPECT_EQ(file_text(root / "20261123" / "qz3log09.txt"), "[09:05:03:7]==> a\r\nb\r\r\n\r\r\n");
    os.platform.set_local_time({2026, 11, 23, 9, 5, 3, 123});
    link::write_log("send return -24.");
    EXPECT_EQ(file_text(root / "20261123" / "qz3log09.txt"),
              "[09:05:03:7]==> a\r\nb\r\r\n\r\r\n[09:05:03:123]==> send return -24.\r\r\n\r\r\n");
}

TEST_F(Log, FilesFollowTheHourAndFoldersTheDate) {
    fs::create_directory(root);
    os.platform.set_local_time({2026, 11, 23, 9, 59, 59, 999});
    link::write_log("last");
    os.platform.set_local_time({2026, 11, 23, 10, 0, 0, 0});
    link::write_log("first");
    os.platform.set_local_time({2026, 11, 24, 0, 0, 0, 1});
    link::write_log("midnight");
    EXPECT_EQ(file_text(root / "20261123" / "qz3log09.txt"), "[09:59:59:999]==> last\r\r\n\r\r\n");
    EXPECT_EQ(file_text(root / "20261123" / "qz3log10.txt"), "[10:00:00:0]==> first\r\r\n\r\r\n");
    EXPECT_EQ(file_text(root / "20261124" / "qz3log00.txt"), "[00:00:00:1]==> midnight\r\r\n\r\r\n");
}

TEST_F(Log, OpenAndCloseWriteTheirRecordsInGbk) {
    fs::create_directory(root);
    os.add_hid_device({.path = "/dev/hidraw0"});
    os.respond = [](const Bytes&) { return make_reply(0, {'1'}); };
    const int handle = open_device(3, 9600);
    ASSERT_GT(handle, 1);
    close_device(handle);
    close_device(handle);
    const std::string h = std::to_string(handle);
    const std::string stamp = "[10:00:00:0]==> ";
    const std::string end = "\r\r\n\r\r\n";
    EXPECT_EQ(file_text(root / "20261123" / "qz3log10.txt"),
              stamp + "open_device port = 3,Baud= 9600" + end +       //
                  stamp + "ReportBufferSize = 0x100" + end +          //
                  stamp + "open_device HANDLE = " + h + end +         //
                  stamp + "get_version HANDLE = " + h + ",return = 0" + end +  //
                  stamp + "open_device return = " + h + end +         //
                  stamp + "close_device HANDLE = " + h + end +        //
                  stamp + "close_device \xB3\xC9\xB9\xA6 " + end +    //
                  stamp + "close_device HANDLE = " + h + end +        //
                  stamp + "close_device \xCA\xA7\xB0\xDC " + end);
}

TEST_F(Log, FailedTransfersAndSerialOpenAreLogged) {
    fs::create_directory(root);
    os.add_serial_port({.name = "COM1"});
    os.respond = [](const Bytes&) { return Bytes{}; };
    EXPECT_EQ(open_device(0, 9600), 0);
    const std::string text = file_text(root / "20261123" / "qz3log10.txt");
    EXPECT_NE(text.find("open_device com\xA1\xA1HANDLE = "), std::string::npos);
    EXPECT_NE(text.find("receive return -34."), std::string::npos);
    EXPECT_NE(text.find("get_version HANDLE = "), std::string::npos);
    EXPECT_NE(text.find("open_device return = 0"), std::string::npos);
}

class LogCleaning : public Log {
protected:
    void folder(const std::string& name, bool with_file = true) {
        fs::create_directories(root / name);
        if (with_file) std::ofstream(root / name / "qz3log01.txt") << "x";
    }
    bool present(const std::string& name) { return fs::exists(root / name); }
};

TEST_F(LogCleaning, KeepsTodayAndYesterdayByNumber) {
    os.platform.set_local_time({2026, 11, 15, 8, 0, 0, 0});
    for (auto name : {"20261115", "20261114", "20261113", "20251231", "20261116", "abc", "7"}) folder(name);
    std::ofstream(root / "20200101.txt") << "file beside the folders";
    link::clean_log_folders(root);
    EXPECT_TRUE(present("20261115"));
    EXPECT_TRUE(present("20261114"));
    EXPECT_TRUE(present("20261116"));  // the future stays
    EXPECT_FALSE(present("20261113"));
    EXPECT_FALSE(present("20251231"));
    EXPECT_FALSE(present("abc"));  // reads as 0
    EXPECT_FALSE(present("7"));
    EXPECT_TRUE(present("20200101.txt"));

    // On the first of a month only today stays.
    os.platform.set_local_time({2026, 12, 1, 8, 0, 0, 0});
    folder("20261201");
    folder("20261130");
    link::clean_log_folders(root);
    EXPECT_TRUE(present("20261201"));
    EXPECT_FALSE(present("20261130"));
}

TEST_F(LogCleaning, FoldersThatAreNotPlainStay) {
    os.platform.set_local_time({2026, 11, 15, 8, 0, 0, 0});
    folder("20200101");
    fs::create_directory(root / "20200101" / "inner");
    folder(".20200102");
    folder("20200103");
    fs::permissions(root / "20200103", fs::perms::owner_write, fs::perm_options::remove);
    fs::create_directory_symlink(root / "20200101", root / "20200104");
    link::clean_log_folders(root);
    EXPECT_TRUE(present("20200101"));  // not empty: its subfolder stays
    EXPECT_FALSE(fs::exists(root / "20200101" / "qz3log01.txt"));
    EXPECT_TRUE(fs::exists(root / "20200101" / "inner"));
    EXPECT_TRUE(fs::exists(root / ".20200102" / "qz3log01.txt"));  // hidden
    EXPECT_TRUE(fs::exists(root / "20200103" / "qz3log01.txt"));   // read-only
    EXPECT_TRUE(fs::is_symlink(root / "20200104"));
}

TEST_F(LogCleaning, MissingRootIsSilent) {
    link::clean_log_folders(root);
    EXPECT_FALSE(fs::exists(root));
}

}  // namespace
}  // namespace qz::test
