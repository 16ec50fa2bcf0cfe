#include "identity/card_read.h"

#include <array>
#include <cstring>
#include <optional>

#include "identity/gbk_text.h"

namespace qz::identity {
namespace {

constexpr int module_failed = -50;
constexpr int path_too_long = -1;
constexpr std::size_t max_photo_path = 254;

// Link time-outs while the module reads the card, and those left behind.
// The module's two reads: text and photo, or text, photo and finger data.
constexpr std::uint8_t text_and_photo_class = 0x32, text_and_photo_read = 0x50;
constexpr std::uint8_t with_finger_class = 0xD0, with_finger_read = 0x07;
constexpr std::uint32_t read_ms = 4000, read_write_gap_ms = 10;
constexpr std::uint32_t after_read_ms = 2000, after_write_gap_ms = 2;

// Module status rows, tried in order; an empty byte matches any value.
struct StatusRow {
    std::optional<std::uint8_t> first;
    std::optional<std::uint8_t> second;
    std::uint8_t third;
    int result;
    std::u16string_view message;
};

constexpr std::array<StatusRow, 7> status_rows{{
    {0x00, 0x00, 0x90, 0, u""},
    {0x00, 0x00, 0x80, module_failed, u"寻找卡片失败"},
    {std::nullopt, std::nullopt, 0x81, module_failed, u"选取卡片失败"},
    {0x00, 0x00, 0x91, module_failed, u"卡片中此项无内容"},
    {std::nullopt, std::nullopt, 0x41, module_failed, u"读卡失败"},
    {std::nullopt, std::nullopt, 0x40, module_failed, u"无法识别的卡片类型"},
    {std::nullopt, std::nullopt, 0x47, module_failed, u"取随机数失败"},
}};
constexpr std::u16string_view other_module_failure = u"读二代证失败.";

struct ResultMessage {
    int result;
    std::u16string_view message;
};

constexpr std::array<ResultMessage, 6> result_messages{{
    {0, u"读二代证成功"},
    {-2, u"调用sdtapi.dll错误"},
    {-4, u"wlt文件后缀错误"},
    {-5, u"wlt文件打开错误"},
    {-6, u"wlt文件格式错误"},
    {-8, u"设备连接错误"},
}};
constexpr std::u16string_view other_result = u"其他错误";
constexpr std::u16string_view bad_photo_path = u"照片全路径设置非法";

std::u16string_view message_for(int result) {
    for (const ResultMessage& row : result_messages)
        if (row.result == result) return row.message;
    return other_result;
}

}  // namespace

Outcome module_status(std::span<const std::uint8_t, 3> status) {
    const auto matches = [](std::optional<std::uint8_t> want, std::uint8_t have) { return !want || *want == have; };
    for (const StatusRow& row : status_rows)
        if (matches(row.first, status[0]) && matches(row.second, status[1]) && row.third == status[2])
            return {row.result, to_gbk(row.message)};
    return {module_failed, to_gbk(other_module_failure)};
}

Outcome read_card(int icdev, int mode, ReadReply& reply) {
    const link::Payload payload = mode == 0 ? link::Payload{text_and_photo_class, text_and_photo_read, 0x00}
                                            : link::Payload{with_finger_class, with_finger_read, 0x00};
    int status = 0;
    {
        const link::TimeoutsForCommand timeouts(read_ms, read_write_gap_ms, after_read_ms, after_write_gap_ms);
        status = link::transact(icdev, payload, reply);
    }
    if (status != 0) return {status, {}};
    return module_status(split_reply(mode, reply.data()).module_status);
}

Outcome IDCardDecodeMsg(int mode, std::span<const std::uint8_t> reply, const char* photo_path, CardTexts& texts,
                        std::string_view library) {
    if (photo_path != nullptr && strnlen(photo_path, max_photo_path + 1) > max_photo_path)
        return {path_too_long, to_gbk(bad_photo_path)};

    const ReplyParts parts = split_reply(mode, reply);
    texts.base_info = card_text(parts.text_block);
    texts.finger_info = finger_text(parts.finger);
    const int result = photo_path != nullptr ? SavePhotoFile(parts.photo, photo_path, library) : 0;
    return {result, to_gbk(message_for(result))};
}

}  // namespace qz::identity
