/* Compiles the public header as C and links against the library: each typed
 * pointer below must match its declaration exactly, and each export must resolve. */
#include "qz_32.h"

#include <stddef.h>

typedef void (*any_export)(void);

static int report_progress(int total, int current, int status) {
    return total + current + status;
}

static int (*const open_fn)(unsigned char, int) = open_device;
static int (*const beep_fn)(int, unsigned char, unsigned char, unsigned char) = dev_beep;
static int (*const des_fn)(const unsigned char *, const unsigned char *, unsigned char, unsigned char *) = des_encrypt;
static int (*const asc_hex_fn)(const char *, unsigned char *, unsigned int) = asc_hex;
static int (*const exchange_fn)(int, unsigned char, const unsigned char *, unsigned short, unsigned char *, unsigned short *) = ICC_CommandExchange;
static short (*const mf_read_fn)(int, unsigned char, unsigned char *) = MF_Read;
static short (*const ntag_init_fn)(int, const unsigned char *, const char *) = NTAG215_Init;
static void (*const kb_type_fn)(int) = set_kb_type;
static int (*const id_read_fn)(int, int, const char *, char *, char *) = IDReadCard;
static int (*const text_fn)(int, const char *, int, const char *, const char *, int, int, int, int) = ShowTextInScreen;
static int (*const upgrade_fn)(int, const char *, qz_32_upgrade_progress_callback) = upgrade_scaner;
static int (*const query_fn)(int, unsigned int *) = Query_status;
static const qz_32_upgrade_progress_callback progress_fn = report_progress;

int main(void) {
    const any_export exports[] = {
        (any_export)open_fn,     (any_export)beep_fn,      (any_export)des_fn,     (any_export)asc_hex_fn,
        (any_export)exchange_fn, (any_export)mf_read_fn,   (any_export)ntag_init_fn, (any_export)kb_type_fn,
        (any_export)id_read_fn,  (any_export)text_fn,      (any_export)upgrade_fn, (any_export)query_fn,
    };
    size_t i;
    for (i = 0; i < sizeof exports / sizeof exports[0]; ++i) {
        if (exports[i] == NULL) {
            return 1;
        }
    }
    return progress_fn(0, 0, 0);
}
