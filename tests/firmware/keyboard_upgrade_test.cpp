// The keyboard upgrade end to end against the simulated keyboard and its loader.
#include <cstring>
#include <fstream>
#include <sstream>

#include "sim/models/keyboard/keyboard_model.h"
#include "sim_fixture.h"

namespace qz::test {
namespace {

Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    return bytes;
}

class KeyboardUpgrade : public SimTerminal {
protected:
    int upgrade(const std::string& file_name) {
        std::string path = (folder.path() / file_name).string();
        int result = upgrade_keyboard(icdev, path.data());
        upper_cased_path = path;
        return result;
    }
    sim::KeyboardModel& keyboard() { return sim->model<sim::KeyboardModel>(); }
    std::string keyboard_version() {
        unsigned length = 0;
        unsigned char text[100] = {};
        EXPECT_EQ(get_cktkb_verion(icdev, &length, text), 0);
        return std::string(reinterpret_cast<char*>(text), length);
    }
    std::string upper_cased_path;
};

TEST_F(KeyboardUpgrade, ImageMadeByObjcopyArrivesByteForByte) {
    start({});
    const std::string binary = file_text(QZ_32_SAMPLE_BIN);
    ASSERT_GT(binary.size(), 1000u);
    std::filesystem::copy_file(QZ_32_SAMPLE_HEX, folder.path() / "fw.hex");
    const std::uint32_t before = tick_ms();

    EXPECT_EQ(upgrade("fw.hex"), 0);
    EXPECT_EQ(Bytes(binary.begin(), binary.end()), keyboard().firmware_image());
    EXPECT_EQ(keyboard_version(), "QZKB V2.00");
    EXPECT_NE(upper_cased_path.find("/FW.HEX"), std::string::npos) << "the caller's path is upper-cased";
    const std::uint32_t packages = static_cast<std::uint32_t>((binary.size() + 169) / 170);
    EXPECT_GE(tick_ms() - before, 500u + 5000u + packages * 50u + 5000u) << "the loader's waits were kept";
    EXPECT_EQ(timeouts(), std::make_pair(5000u, 0u));
}

TEST_F(KeyboardUpgrade, PackageNumbersAtTheEdges) {
    struct Case {
        std::size_t size;
        std::size_t data_packages;
    };
    for (const Case& c : {Case{0, 0}, Case{170, 1}, Case{171, 2}, Case{170 * 256 + 1, 257}}) {
        SCOPED_TRACE(c.size);
        start({{"keyboard", {{"in_loader", true}}}});
        const Bytes image = pattern(c.size);
        write_file("image.hex", hex_text(image, 32));
        ASSERT_EQ(upgrade("image.hex"), 0);
        EXPECT_EQ(keyboard().firmware_image(), image);
        std::vector<unsigned> numbers{0};
        for (std::size_t n = 1; n <= c.data_packages; ++n) numbers.push_back(n & 0xFF);
        EXPECT_EQ(keyboard().packages_seen(), numbers);
    }
}

TEST_F(KeyboardUpgrade, RefusedPackageIsSentOnceMoreAndLogged) {
    const ScopedEnv log_root("QZ_32_LOG_ROOT", folder.path().string());
    start({{"keyboard", {{"refuse_package", 2u}, {"refusals", 2u}}}});
    write_file("image.hex", hex_text(pattern(600)));
    EXPECT_NE(upgrade("image.hex"), 0) << "the keyboard never took its image, so the last query fails";
    const std::vector<unsigned> seen = keyboard().packages_seen();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 2u), 2) << "sent twice, never a third time";
    EXPECT_TRUE(keyboard().in_loader());
    std::string log;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
        if (entry.is_regular_file()) log += file_text(entry.path());
    EXPECT_NE(log.find("download_iap error. currPackage : 0001,st : 0x6581."), std::string::npos) << log;
}

TEST_F(KeyboardUpgrade, SilentLoaderEndsWithTheLinkStatus) {
    start({{"keyboard", {{"in_loader", true}, {"silent_after_package", 1u}}}});
    write_file("image.hex", hex_text(pattern(500)));
    EXPECT_EQ(upgrade("image.hex"), -17);
    EXPECT_EQ(keyboard().packages_seen().size(), 2u);
    EXPECT_EQ(timeouts(), std::make_pair(5000u, 0u));
}

TEST_F(KeyboardUpgrade, RefusalsBeforeAnyPackage) {
    start({{"keyboard", {{"loader_version", "QZKB BOOT"}}}});
    write_file("image.hex", hex_text(pattern(10)));
    write_file("image.txt", hex_text(pattern(10)));
    EXPECT_EQ(upgrade("image.txt"), -89);
    EXPECT_EQ(upgrade("image.hex"), -86) << "the loader never says IAP";
    start({{"keyboard", {{"in_loader", true}}}});
    write_file("cut.hex", ":10000000");
    EXPECT_EQ(upgrade("missing.hex"), -89);
    EXPECT_EQ(upgrade("cut.hex"), -86);
    EXPECT_TRUE(keyboard().packages_seen().empty());
}

}  // namespace
}  // namespace qz::test
