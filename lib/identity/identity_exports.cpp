// The identity card exports and the file-to-Base64 helper beside them.
#include <algorithm>
#include <cstring>

#include "identity/base64.h"
#include "identity/card_read.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace identity = qz::identity;
namespace link = qz::link;

namespace {

constexpr std::uint8_t module_class = 0x32, module_identifier = 0x51;
constexpr std::uint32_t after_mode_id_read_ms = 2000, after_mode_id_write_gap_ms = 10;
// The identifier's length goes out in one byte.
constexpr std::size_t mode_id_capacity = 255;

bool valid_mode(int mode) { return mode == 0 || mode == 1; }

void copy_text(const std::string& text, char* out) { std::memcpy(out, text.c_str(), text.size() + 1); }

}  // namespace

QZ_32_API int QZ_32_CALL IDReadCard(int icdev, int nMode, const char* sPhotoPath, char* sBaseInfo, char* sFingerInfo) {
    const qz::link::ExportLock lock;
    if (!valid_mode(nMode) || sBaseInfo == nullptr || sFingerInfo == nullptr) return link::status_bad_argument;
    identity::ReadReply reply;
    if (const auto read = identity::read_card(icdev, nMode, reply); read.result != 0) return read.result;

    identity::CardTexts texts;
    const auto decoded = identity::IDCardDecodeMsg(nMode, reply.data(), sPhotoPath, texts);
    if (decoded.result != 0) return decoded.result;
    copy_text(texts.base_info, sBaseInfo);
    copy_text(texts.finger_info, sFingerInfo);
    return 0;
}

QZ_32_API int QZ_32_CALL IDCardBaseMsg(int icdev, int nMode, int* nDataLen, unsigned char* sData) {
    const qz::link::ExportLock lock;
    if (!valid_mode(nMode) || nDataLen == nullptr || sData == nullptr) return link::status_bad_argument;
    identity::ReadReply reply;
    if (const auto read = identity::read_card(icdev, nMode, reply); read.result != 0) return read.result;
    const auto data = reply.data();
    std::copy(data.begin(), data.end(), sData);
    *nDataLen = static_cast<int>(data.size());
    return 0;
}

QZ_32_API int QZ_32_CALL IDCardGetModeID(int icdev, unsigned char* nIdLen, unsigned char* sModeId) {
    const qz::link::ExportLock lock;
    if (nIdLen == nullptr || sModeId == nullptr) return link::status_bad_argument;
    link::Reply<mode_id_capacity> reply;
    int status;
    {
        const auto& current = link::link_state();
        const link::TimeoutsForCommand timeouts(current.read_ms, current.write_gap_ms, after_mode_id_read_ms,
                                                after_mode_id_write_gap_ms);
        status = link::transact(icdev, link::Payload{module_class, module_identifier}, reply);
    }
    if (status != 0) return status;
    const auto data = reply.data();
    *nIdLen = static_cast<unsigned char>(data.size());
    std::copy(data.begin(), data.end(), sModeId);
    return 0;
}

QZ_32_API int QZ_32_CALL GetFileBase64Buffer(const char* sFileName, char* sBase64) {
    if (sFileName == nullptr || sBase64 == nullptr) return link::status_bad_argument;
    return identity::file_to_base64(sFileName, sBase64);
}
