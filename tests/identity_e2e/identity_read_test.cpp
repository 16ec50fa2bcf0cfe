// The library's identity card exports against the simulated identity module,
// over HID and serial, with the photo decoded by the project's photo component.
#include <iconv.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "qz_32.h"
#include "sim/models/identity/identity_model.h"
#include "sim/endpoints/inprocess_platform.h"
#include "sim/core/scenario.h"
#include "sim/core/simulator.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using nlohmann::json;

constexpr int module_failed = -50;
constexpr int reply_too_long = -38;
constexpr int bad_argument = -19;
// What the host gives room for.
constexpr std::size_t base_info_size = 3096, finger_info_size = 2060, raw_reply_size = 3096;

const fs::path scenario_folder = QZ_32_SIM_SCENARIO_DIR;

// GBK of UTF-8 text, converted independently of the library.
std::string gbk(std::string_view utf8) {
    const auto closer = [](iconv_t cd) { iconv_close(cd); };
    const std::unique_ptr<std::remove_pointer_t<iconv_t>, decltype(closer)> cd(iconv_open("GBK", "UTF-8"), closer);
    if (cd.get() == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no GBK converter");
    std::string in(utf8), out(utf8.size() * 2, '\0');
    char* from = in.data();
    char* to = out.data();
    std::size_t from_left = in.size(), to_left = out.size();
    if (iconv(cd.get(), &from, &from_left, &to, &to_left) == static_cast<std::size_t>(-1))
        throw std::runtime_error("not convertible to GBK");
    out.resize(out.size() - to_left);
    return out;
}

const std::string ordinary_text = gbk(
    "0|王小明|男|汉|19900307|北京市海淀区示例路88号院3号楼2单元101室|110108199003070016|"
    "北京市公安局海淀分局|20200115|20400115||");
const std::string foreigner_text = gbk(
    "1|JOHNSON EMILY ROSE|女/F|USA110085031502|美国/USA|约翰逊|20230601|20330601|19850315|01|1500|I||");
const std::string ordinary_finger = "43011A0B000000000000000000000000F1225C3D7E0891A413662B00C74E5902";
const std::string foreigner_finger = "43012C0A0000000000000000000000008E1347B205D9601F3A74C10952EE186D";

Bytes file_bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

std::uint32_t le(const Bytes& bytes, std::size_t at, int size) {
    std::uint32_t value = 0;
    for (int i = size; i-- > 0;) value = value << 8 | bytes.at(at + static_cast<std::size_t>(i));
    return value;
}

// A 24-bit uncompressed BMP file, checked whole; its pixels read as RGB.
class Bmp24 {
public:
    explicit Bmp24(Bytes file) : file_(std::move(file)) {}

    // Header, sizes and length of a valid file of `width` by `height`.
    ::testing::AssertionResult valid(int width, int height) const {
        if (file_.size() < 54 || file_[0] != 'B' || file_[1] != 'M')
            return ::testing::AssertionFailure() << "no BM header";
        const std::size_t row = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
        const struct {
            const char* what;
            std::uint32_t have, want;
        } fields[] = {
            {"file size", le(file_, 2, 4), static_cast<std::uint32_t>(file_.size())},
            {"info header size", le(file_, 14, 4), 40},
            {"width", le(file_, 18, 4), static_cast<std::uint32_t>(width)},
            {"height", le(file_, 22, 4), static_cast<std::uint32_t>(height)},
            {"planes", le(file_, 26, 2), 1},
            {"bits per pixel", le(file_, 28, 2), 24},
            {"compression", le(file_, 30, 4), 0},
            {"pixel bytes", static_cast<std::uint32_t>(file_.size() - le(file_, 10, 4)),
             static_cast<std::uint32_t>(row * static_cast<std::size_t>(height))},
        };
        for (const auto& field : fields)
            if (field.have != field.want)
                return ::testing::AssertionFailure() << field.what << " " << field.have << ", expected " << field.want;
        return ::testing::AssertionSuccess();
    }

    // Pixel (x, y), y counted from the top.
    std::array<std::uint8_t, 3> rgb(int x, int y) const {
        const auto width = le(file_, 18, 4), height = le(file_, 22, 4);
        const std::size_t row = (width * 3 + 3) / 4 * 4;
        const std::size_t at =
            le(file_, 10, 4) + (height - 1 - static_cast<std::size_t>(y)) * row + static_cast<std::size_t>(x) * 3;
        return {file_.at(at + 2), file_.at(at + 1), file_.at(at)};
    }

private:
    Bytes file_;
};

// Portrait size and a point inside the hair, whose colour tells the two portraits apart.
constexpr int photo_width = 102, photo_height = 126, hair_x = 51, hair_y = 20;
constexpr std::array<std::uint8_t, 3> dark_hair{40, 30, 25}, fair_hair{214, 178, 96};

enum class Link { hid, serial };

// The identity module of the default scenario, without the other devices.
json default_identity() {
    std::ifstream in(scenario_folder / "default.json");
    return {{"identity", json::parse(in).at("identity")}};
}

// A library linked to a simulated terminal of the scenario `document`, on one link.
class IdentityEndToEnd : public ::testing::Test {
protected:
    ~IdentityEndToEnd() override {
        if (icdev > 1) close_device(icdev);
        platform::install(nullptr);
    }

    void connect(const json& document, Link link = Link::hid) {
        terminal = sim::make_terminal(sim::parse_scenario(document));
        if (link == Link::hid)
            os.add_hid_device({.path = "/dev/hidraw0", .terminal = terminal});
        else
            os.add_serial_port({.name = "COM1", .terminal = terminal});
        platform::install(&os);
        icdev = open_device(0, 115200);
        ASSERT_GT(icdev, 1);
    }

    sim::IdentityModel& module() { return *terminal->model<sim::IdentityModel>(); }

    // IDReadCard into fresh buffers; the outputs stay "untouched" when not written.
    struct Read {
        int result;
        std::string base, finger;
    };
    Read read(int mode, const char* photo = nullptr) {
        std::string base(base_info_size, '\0'), finger(finger_info_size, '\0');
        base.replace(0, 9, "untouched");
        finger.replace(0, 9, "untouched");
        const int result = IDReadCard(icdev, mode, photo, base.data(), finger.data());
        return {result, base.c_str(), finger.c_str()};
    }

    sim::InProcessPlatform os;
    std::shared_ptr<sim::Terminal> terminal;
    int icdev = 0;
    TempDir dir;
};

struct CardCase {
    const char* profile;  // scenario file
    const std::string& text;
    const std::string& finger;
    std::array<std::uint8_t, 3> hair;
    const char* photo_file;
};

const CardCase ordinary_card{"default.json", ordinary_text, ordinary_finger, dark_hair, "portrait.png"};
const CardCase foreigners_card{"foreigner.json", foreigner_text, foreigner_finger, fair_hair, "portrait_foreigner.png"};

class ReadEveryWay : public IdentityEndToEnd,
                     public ::testing::WithParamInterface<std::tuple<const CardCase*, Link>> {};

TEST_P(ReadEveryWay, BothModesWithAPhoto) {
    const auto& [card, link] = GetParam();
    std::ifstream in(scenario_folder / card->profile);
    ASSERT_NO_FATAL_FAILURE(connect(json::parse(in), link));

    for (int mode : {0, 1}) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        const fs::path photo = dir.path() / ("made/by mode " + std::to_string(mode)) / "holder.bmp";
        const Read result = read(mode, photo.c_str());
        ASSERT_EQ(result.result, 0);
        EXPECT_EQ(result.base, card->text);
        EXPECT_EQ(result.finger, mode == 1 ? card->finger : "");

        const Bmp24 bmp(file_bytes(photo));
        ASSERT_TRUE(bmp.valid(photo_width, photo_height));
        EXPECT_EQ(bmp.rgb(hair_x, hair_y), card->hair) << "the portrait of this card";
        EXPECT_EQ(file_bytes(photo.parent_path() / "sfz.wlt"), file_bytes(scenario_folder / card->photo_file))
            << "the photo bytes arrive whole";
    }
}

INSTANTIATE_TEST_SUITE_P(CardsAndLinks, ReadEveryWay,
                         ::testing::Combine(::testing::Values(&ordinary_card, &foreigners_card),
                                            ::testing::Values(Link::hid, Link::serial)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param) == &ordinary_card ? "ordinary" : "foreigner") +
                                    (std::get<1>(info.param) == Link::hid ? "_hid" : "_serial");
                         });

TEST_F(IdentityEndToEnd, WithoutAPhotoPathNoFileIsMade) {
    ASSERT_NO_FATAL_FAILURE(connect(default_identity()));
    const fs::path here = fs::current_path();
    fs::current_path(dir.path());
    const Read result = read(1);
    fs::current_path(here);
    ASSERT_EQ(result.result, 0);
    EXPECT_EQ(result.base, ordinary_text);
    EXPECT_EQ(result.finger, ordinary_finger);
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST_F(IdentityEndToEnd, CardsChangeOnTheModuleBetweenReads) {
    ASSERT_NO_FATAL_FAILURE(connect(default_identity()));
    EXPECT_EQ(read(0).base, ordinary_text);
    module().present("foreigner");
    EXPECT_EQ(read(0).base, foreigner_text);
}

TEST_F(IdentityEndToEnd, ModuleStatusesGiveTheModulesFailure) {
    ASSERT_NO_FATAL_FAILURE(connect(default_identity()));
    const sim::ModuleStatus failures[] = {
        {0x00, 0x00, 0x80}, {0x00, 0x00, 0x81}, {0x00, 0x00, 0x91}, {0x00, 0x00, 0x41},
        {0x00, 0x00, 0x40}, {0x00, 0x00, 0x47}, {0x01, 0x00, 0x90}, {0x12, 0x34, 0x81},
    };
    for (const auto& status : failures) {
        module().set_status(status);
        for (int mode : {0, 1}) {
            const Read result = read(mode, (dir.path() / "p.bmp").c_str());
            EXPECT_EQ(result.result, module_failed) << int{status[0]} << " " << int{status[2]};
            EXPECT_EQ(result.base, "untouched");
            EXPECT_EQ(result.finger, "untouched");

            int length = -7;
            std::vector<unsigned char> raw(raw_reply_size, 0xEE);
            EXPECT_EQ(IDCardBaseMsg(icdev, mode, &length, raw.data()), module_failed);
            EXPECT_EQ(length, -7);
            EXPECT_EQ(raw[0], 0xEE);
        }
    }
    EXPECT_FALSE(fs::exists(dir.path() / "p.bmp"));

    module().set_status(sim::module_ok);
    module().present(std::nullopt);
    EXPECT_EQ(read(0).result, module_failed) << "no card on the module";
    module().present("ordinary");
    EXPECT_EQ(read(0).result, 0);
}

TEST_F(IdentityEndToEnd, RawReplyIsTheModulesAnswer) {
    ASSERT_NO_FATAL_FAILURE(connect(default_identity()));
    const std::pair<int, Bytes> modes[] = {{0, {0x32, 0x50, 0x00}}, {1, {0xD0, 0x07, 0x00}}};
    for (const auto& [mode, payload] : modes) {
        const Bytes expected = terminal->execute(payload).data;
        int length = 0;
        std::vector<unsigned char> raw(raw_reply_size, 0xEE);
        ASSERT_EQ(IDCardBaseMsg(icdev, mode, &length, raw.data()), 0);
        ASSERT_EQ(static_cast<std::size_t>(length), expected.size());
        EXPECT_EQ(Bytes(raw.begin(), raw.begin() + length), expected) << "mode " << mode;
        EXPECT_EQ(raw[static_cast<std::size_t>(length)], 0xEE) << "nothing copied beyond the reply";
    }
    int length = 0;
    EXPECT_EQ(IDCardBaseMsg(icdev, 2, &length, std::vector<unsigned char>(raw_reply_size).data()), bad_argument);
}

TEST_F(IdentityEndToEnd, ModuleIdentifier) {
    ASSERT_NO_FATAL_FAILURE(connect(default_identity()));
    unsigned char length = 0;
    std::array<unsigned char, 256> id{};
    ASSERT_EQ(IDCardGetModeID(icdev, &length, id.data()), 0);
    const Bytes expected{0x05, 0x00, 0x01, 0x00, 0x20, 0x24, 0x11, 0x23,
                         0x00, 0x00, 0x00, 0x01, 0x51, 0x5A, 0x00, 0x01};
    ASSERT_EQ(length, expected.size());
    EXPECT_EQ(Bytes(id.begin(), id.begin() + length), expected);
}

TEST_F(IdentityEndToEnd, FullSizeFingerData) {
    json document = default_identity();
    std::string finger_hex;
    for (int i = 0; i < 1024; ++i) finger_hex += "0123456789ABCDEF"[i % 16], finger_hex += "FEDCBA9876543210"[i % 16];
    document["identity"]["cards"]["ordinary"]["finger"] = {{"hex", finger_hex}};
    ASSERT_NO_FATAL_FAILURE(connect(document));
    const Read result = read(1, (dir.path() / "p.bmp").c_str());
    ASSERT_EQ(result.result, 0);
    EXPECT_EQ(result.finger, finger_hex);
    EXPECT_EQ(result.base, ordinary_text);
}

TEST_F(IdentityEndToEnd, PhotoThatIsNoPictureIsAFormatError) {
    json document = default_identity();
    document["identity"]["cards"]["ordinary"]["photo"] = {{"hex", "57 4C 54 00 01 02 03"}};
    ASSERT_NO_FATAL_FAILURE(connect(document));
    const fs::path photo = dir.path() / "p.bmp";
    const Read result = read(0, photo.c_str());
    EXPECT_EQ(result.result, -6) << "the component's format error, less 2";
    EXPECT_EQ(result.base, "untouched");
    EXPECT_FALSE(fs::exists(photo));
}

TEST_F(IdentityEndToEnd, ReplyBeyondTheReadAreaIsRefused) {
    json document = default_identity();
    document["identity"]["cards"]["ordinary"]["photo"] = std::string(3096 - 11 - 256 + 1, 'x');
    ASSERT_NO_FATAL_FAILURE(connect(document));
    int length = -7;
    std::vector<unsigned char> raw(raw_reply_size + 64, 0xEE);
    EXPECT_EQ(IDCardBaseMsg(icdev, 1, &length, raw.data()), reply_too_long);
    EXPECT_EQ(length, -7);
    EXPECT_EQ(raw[0], 0xEE);
    EXPECT_EQ(read(1).result, reply_too_long);
    module().present("foreigner");
    EXPECT_EQ(read(1).result, 0) << "the link is still good";
}

}  // namespace
}  // namespace qz::test
