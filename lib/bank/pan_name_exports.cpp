// The bank card exports: PAN and holder's name, contactless, contact, or by the card state.
#include "bank/card_path.h"
#include "bank/pan_name.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace {

// Card states that the terminal reports for a card in the contact slot.
constexpr bool in_contact_slot(unsigned char state) { return state == 0 || state == 2; }

}  // namespace

QZ_32_API int QZ_32_CALL GetPanNoCardHldName(int icdev, unsigned char* sPan, unsigned short* nPanLen,
                                  unsigned char* sCardHldName, unsigned short* nCardHldNameLen) {
    const qz::link::ExportLock lock;
    if (sPan == nullptr || nPanLen == nullptr || sCardHldName == nullptr || nCardHldNameLen == nullptr)
        return qz::link::status_bad_argument;
    unsigned char nCardState = 0;
    if (dev_cardstate(icdev, &nCardState) == 0 && in_contact_slot(nCardState))
        return ICC_GetPanNoCardHldName(icdev, 0, sPan, nPanLen, sCardHldName, nCardHldNameLen);
    return NC_GetPanNoCardHldName(icdev, sPan, nPanLen, sCardHldName, nCardHldNameLen);
}

QZ_32_API int QZ_32_CALL NC_GetPanNoCardHldName(int icdev, unsigned char* sPan, unsigned short* nPanLen,
                                     unsigned char* sCardHldName, unsigned short* nCardHldNameLen) {
    const qz::link::ExportLock lock;
    qz::bank::ContactlessPath path(icdev);
    return qz::bank::read_pan_and_name(path, {sPan, nPanLen, sCardHldName, nCardHldNameLen});
}

QZ_32_API int QZ_32_CALL ICC_GetPanNoCardHldName(int icdev, unsigned char slot, unsigned char* sPan, unsigned short* nPanLen,
                                      unsigned char* sCardHldName, unsigned short* nCardHldNameLen) {
    const qz::link::ExportLock lock;
    qz::bank::ContactPath path(icdev, slot);
    return qz::bank::read_pan_and_name(path, {sPan, nPanLen, sCardHldName, nCardHldNameLen});
}
