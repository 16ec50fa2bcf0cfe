// The library's identity card exports against the simulated identity module,
// over HID and serial, with the photo decoded by the project's photo component.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "qz_32.h"
#include "support/gbk.h"
#include "support/simulated_terminal.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using nlohmann::json;

// What the host gives room for.
constexpr std::size_t base_info_size = 3096, finger_info_size = 2060;

const fs::path scenario_folder = QZ_32_SIM_SCENARIO_DIR;
const std::string ordinary_text = gbk(
    "0|王小明|男|汉|19900307|北京市海淀区示例路88号院3号楼2单元101室|110108199003070016|"
    "北京市公安局海淀分局|20200115|20400115||");
const std::string foreigner_text = gbk(
    "1|JOHNSON EMILY ROSE|女/F|USA110085031502|美国/USA|约翰逊|20230601|20330601|19850315|01|1500|I||");
const std::string ordinary_finger = "43011A0B000000000000000000000000F1225C3D7E0891A413662B00C74E5902";
const std::string foreigner_finger = "43012C0A0000000000000000000000008E1347B205D9601F3A74C10952EE186D";

Bytes file_bytes(const fs::path& path) {
    const std::string text = file_text(path);
    return Bytes(text.begin(), text.end());
}

// The library on a simulated terminal of the scenario `document`, on one link.
class IdentityEndToEnd : public ::testing::Test {
protected:
    void connect(const json& document, Link link = Link::hid) {
        connection.emplace(document, link);
        icdev = connection->icdev;
        ASSERT_GT(icdev, 1);
    }


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

    std::optional<SimulatedTerminal> connection;
    int icdev = 0;
    TempDir dir;
};

struct CardCase {
    const char* profile;  // scenario file
    const std::string& text;
    const std::string& finger;
    const char* photo_file;
};

const CardCase ordinary_card{"default.json", ordinary_text, ordinary_finger, "portrait.png"};
const CardCase foreigners_card{"foreigner.json", foreigner_text, foreigner_finger, "portrait_foreigner.png"};

class ReadEveryWay : public IdentityEndToEnd,
                     public ::testing::WithParamInterface<std::tuple<const CardCase*, Link>> {};

TEST_P(ReadEveryWay, BothModesWithAPhoto) {
    const auto& [card, link] = GetParam();
    ASSERT_NO_FATAL_FAILURE(connect(shipped_scenario(card->profile), link));

    for (int mode : {0, 1}) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        const fs::path photo = dir.path() / ("made/by mode " + std::to_string(mode)) / "holder.bmp";
        const Read result = read(mode, photo.c_str());
        ASSERT_EQ(result.result, 0);
        EXPECT_EQ(result.base, card->text);
        EXPECT_EQ(result.finger, mode == 1 ? card->finger : "");

        const Bytes bmp = file_bytes(photo);
        ASSERT_GT(bmp.size(), 54u) << "the component decoded the photo";
        EXPECT_EQ(Bytes(bmp.begin(), bmp.begin() + 2), Bytes({'B', 'M'}));
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

}  // namespace
}  // namespace qz::test
