// ShowPicInScreen, LoadPicInScreen and ShowMonochromeInScreen: an image file
// decoded, scaled and packed on the host, then one paced transfer.
#include <utility>

#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"
#include "screen/picture.h"

namespace {

using namespace qz::screen;
constexpr int bad = qz::link::status_bad_argument;

bool position_in_range(int x, int y) { return x >= 0 && x <= screen_width && y >= 0 && y <= screen_height; }

bool fits_at(const PictureArea& area) {
    return area.x + area.width <= screen_width && area.y + area.height <= screen_height;
}

// Decodes `path`, scales it to even sides within the screen and sends it with
// `commands`; `place` says whether the area is allowed and may add to the first command.
template <class Place>
int send_picture(int icdev, const char* path, int x, int y, TransferCommands commands, Place place) {
    if (path == nullptr) return bad;
    auto image = qz::platform::decode_image_file(path);
    if (!image) return bad;
    PictureArea area{round_up_even(x), round_up_even(y), round_up_even(fitted_width(*image)),
                     round_up_even(fitted_height(*image)), 0};
    area.content_length = static_cast<std::uint32_t>(area.width * area.height * 2);
    qz::link::Payload first = picture_first_command(commands.first, area);
    if (!place(area, first)) return bad;
    const auto fitted = qz::platform::stretch_image(std::move(*image), area.width, area.height);
    if (!fitted) return bad;
    const auto words = pack_colour_words(*fitted);
    if (words.empty()) return bad;
    return send_transfer(icdev, first, commands.data, words, true);
}

}  // namespace

QZ_32_API int QZ_32_CALL ShowPicInScreen(int icdev, const char* path, int x, int y, int, int) {
    const qz::link::ExportLock lock;
    return send_picture(icdev, path, x, y, {Instruction::picture_first, Instruction::picture_data},
                        [&](const PictureArea& area, qz::link::Payload&) { return position_in_range(x, y) && fits_at(area); });
}

QZ_32_API int QZ_32_CALL LoadPicInScreen(int icdev, int page, const char* path, int x, int y, int, int) {
    const qz::link::ExportLock lock;
    const TransferCommands commands = page == 0
                                          ? TransferCommands{Instruction::store_screen_first, Instruction::store_screen_data}
                                          : TransferCommands{Instruction::store_page_first, Instruction::store_page_data};
    return send_picture(icdev, path, x, y, commands, [&](const PictureArea& area, qz::link::Payload& first) {
        if (page != 0) first.add(static_cast<std::uint8_t>(page));
        return x == 0 && y == 0 && area.width == screen_width && area.height == screen_height;
    });
}

QZ_32_API int QZ_32_CALL ShowMonochromeInScreen(int icdev, const char* path, int x, int y, int, int) {
    const qz::link::ExportLock lock;
    if (path == nullptr) return bad;
    auto image = qz::platform::decode_image_file(path);
    if (!image) return bad;
    const int width = fitted_width(*image);
    const int height = fitted_height(*image);
    const auto fitted = qz::platform::stretch_image(std::move(*image), width, height);
    if (!fitted) return bad;
    const auto box = find_black_box(*fitted);
    if (!box) return bad;
    const PictureArea area{round_up_even(x), round_up_even(y), box->width, box->height,
                           static_cast<std::uint32_t>((box->width * box->height + 7) / 8)};
    if (!position_in_range(x, y) || !fits_at(area)) return bad;
    const auto bits = pack_monochrome_bits(*fitted, *box);
    return send_transfer(icdev, picture_first_command(Instruction::monochrome_first, area), Instruction::monochrome_data,
                         bits, true);
}
