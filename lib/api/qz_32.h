/* qz_32: the C interface of the counter terminal library.
 *
 * Every function returns 0 for success. -19 means an argument out of range or a
 * refused input, checked before anything is sent to the terminal. Other non-zero
 * results come from the link (see "Link statuses" below) or are the terminal's own
 * status, negated and cut to 16 bits: test results for zero, never for their sign.
 * A number has no meaning beyond 0 and -19 outside the function that returns it.
 *
 * Output buffers carry no capacity: the caller gives room for the reply of that
 * command. Outputs aren't cleared on failure, except that many functions set a
 * length output to 0 before they start. All text is GBK; hex text is upper case
 * and terminated on output, either case on input.
 *
 * Thread safety: every function that talks to the terminal holds one
 * process-wide recursive lock for the whole call. A call from another thread
 * waits until the running one returns; a function that calls another keeps the
 * lock it holds. So two threads may share one terminal, and each gets its own
 * reply. The link state (time-outs, link kind) stays process-wide: a process
 * works with one terminal at a time.
 *
 * Link statuses, the link's own results:
 *   -1   the platform refused a HID feature report
 *   -17  no HID report with id 6 came within the read time-out
 *   -18  HID handle below 1
 *   -19  serial port number above 31 (open_device)
 *   -20  serial port in use: opening it was denied
 *   -21  serial port can't be opened for any other reason
 *   -22  serial port state can't be read
 *   -23  serial port state or event mask can't be set
 *   -24  writing a byte to the serial port failed
 *   -25  reading a byte from the serial port failed
 *   -33  icdev below 1
 *   -34  no STX: none in three HID reports, or not the first serial byte
 *   -35  the last byte of the reply frame isn't ETX; on a serial port also a
 *        reply that stops coming: the reading ends at the first byte that does
 *        not come within the read time-out, so no reply takes longer than that
 *        time-out after its last byte
 *   -36  payload and BCC of the reply don't XOR to 0
 *   -37  the request frame is longer than 65530 bytes
 *   -38  the reply announces more data than the library's reply area for this
 *        command holds; the rest of the reply is not read
 *   -39  the reply is shorter than its three status bytes, or carries fewer
 *        data bytes than the function must hand to its caller
 */
#ifndef QZ_32_H
#define QZ_32_H

#ifdef __cplusplus
#define QZ_32_EXTERN extern "C"
#else
#define QZ_32_EXTERN extern
#endif

#if defined(_WIN32)
#if defined(QZ_32_BUILDING)
#define QZ_32_API QZ_32_EXTERN /* the DLL's module definition file names the exports */
#else
#define QZ_32_API QZ_32_EXTERN __declspec(dllimport)
#endif
#else
#define QZ_32_API QZ_32_EXTERN __attribute__((visibility("default")))
#endif

/* The calling convention of every export and of the callback: __stdcall on
 * 32-bit Windows, where host programs declare such exports that way; the
 * system's own elsewhere. The DLLs export the undecorated names either way. */
#if defined(_WIN32) && !defined(_WIN64)
#define QZ_32_CALL __stdcall
#else
#define QZ_32_CALL
#endif

/* Progress of upgrade_scaner, called in the caller's thread: once with
 * (total, 0, 0) before the first package, then after every package, the failed
 * one too, with the packages done and that package's result. Its result is ignored. */
typedef int (QZ_32_CALL *qz_32_upgrade_progress_callback)(int total, int current, int status);

/* ---- Terminal: open, close, control ----------------------------------------- */

/* Finds the terminal on USB, else on serial port `port` (0 = COM1 .. 31 = COM32).
 * Above 1: the handle. 0: a port opened but the terminal didn't answer.
 * -19..-23: no USB terminal and the serial port failed. */
QZ_32_API int QZ_32_CALL open_device(unsigned char port, int baud);
/* 0 closed, -1 not closed. */
QZ_32_API int QZ_32_CALL close_device(int icdev);
/* `version` gets the whole reply (80 bytes suffice). */
QZ_32_API int QZ_32_CALL get_version(int icdev, unsigned char *length, unsigned char *version);
/* `baud_code` 0..4; the host side of a serial link is not changed. */
QZ_32_API int QZ_32_CALL dev_setbaud(int icdev, unsigned char baud_code);
QZ_32_API int QZ_32_CALL dev_beep(int icdev, unsigned char beep_a, unsigned char beep_b, unsigned char beep_c);
QZ_32_API int QZ_32_CALL dev_disp(int icdev, unsigned char mode);
/* `*state` 0 or 2: a card in the contact slot; other values: in the contactless field. */
QZ_32_API int QZ_32_CALL dev_cardstate(int icdev, unsigned char *state);
/* `length` 1..20. */
QZ_32_API int QZ_32_CALL dev_writesnr(int icdev, unsigned char length, const unsigned char *data);
/* `length` 1..20; `data` gets `length` bytes, -39 when the reply holds fewer. */
QZ_32_API int QZ_32_CALL dev_readsnr(int icdev, unsigned char length, unsigned char *data);
/* `*length` is 0 after a failure. */
QZ_32_API int QZ_32_CALL dev_readregno(int icdev, unsigned char *length, unsigned char *data);
/* `offset` 0..200, `length` 1..200, in bytes; -39 when the reply holds fewer. */
QZ_32_API int QZ_32_CALL dev_readeeprom(int icdev, unsigned short offset, unsigned short length, unsigned char *data);
/* `offset` 0..200, `length` 1..200; neighbour bytes of a partly written word are kept. */
QZ_32_API int QZ_32_CALL dev_writeeeprom(int icdev, unsigned short offset, unsigned short length, const unsigned char *data);

/* ---- Host cryptography and conversion (no terminal involved) ------------------- */

/* ECB on 1..16 bytes, zero-padded to whole blocks; `out` gets exactly `length` bytes.
 * Key 8 bytes (des_) or 16 bytes K1 K2 (des3_, E-D-E). */
QZ_32_API int QZ_32_CALL des_encrypt(const unsigned char *key, const unsigned char *data, unsigned char length, unsigned char *out);
QZ_32_API int QZ_32_CALL des_decrypt(const unsigned char *key, const unsigned char *data, unsigned char length, unsigned char *out);
QZ_32_API int QZ_32_CALL des3_encrypt(const unsigned char *key, const unsigned char *data, unsigned char length, unsigned char *out);
QZ_32_API int QZ_32_CALL des3_decrypt(const unsigned char *key, const unsigned char *data, unsigned char length, unsigned char *out);
/* ECB with an 8-byte key on up to 80000 bytes; `out` gets `length` rounded up to 8. */
QZ_32_API int QZ_32_CALL rf_encrypt(const unsigned char *key, const unsigned char *data, unsigned int length, unsigned char *out);
QZ_32_API int QZ_32_CALL rf_decrypt(const unsigned char *key, const unsigned char *data, unsigned int length, unsigned char *out);
/* `text` needs 2 * `length` + 1 bytes. */
QZ_32_API int QZ_32_CALL hex_asc(const unsigned char *source, char *text, unsigned int length);
/* `length` counts output bytes; `target` needs `length` + 1. -1 on a non-hex
 * character; nothing behind it is read, so a terminated shorter text is safe. */
QZ_32_API int QZ_32_CALL asc_hex(const char *text, unsigned char *target, unsigned int length);
/* Decrypts as des_decrypt (8-byte key) or des3_decrypt (16-byte key) under the host's
 * copy of the PIN pad's current work key: the key number of the last encrypted entry,
 * or of mw_kb_activekey. The host keeps copies of work keys 0 to 15 only, and only the
 * library's own wrapped key load fills them (a key loaded with pwdkb_load_workkey is
 * not kept), so a copy never filled is all zeros. A current key number of 16 or more
 * gives -19 and leaves `out` alone. */
QZ_32_API int QZ_32_CALL pwd_decrypt(const unsigned char *data, unsigned char length, unsigned char *out);

/* ---- CPU cards: contactless session and contact slots 0..4 --------------------- */

/* `mode` 0 or 1. `uid` and `ats` get the card's UID and answer to select; -38 when the
 * reply's UID or answer lengths run past its end. */
QZ_32_API int QZ_32_CALL OpenCard(int icdev, unsigned char mode, unsigned char *uid, unsigned char *ats, unsigned char *ats_length);
/* As OpenCard, with hex text outputs; `*ats_length` counts characters (-38 for an
 * answer over 127 bytes, which that count cannot hold). */
QZ_32_API int QZ_32_CALL OpenCard_hex(int icdev, unsigned char mode, char *uid, char *ats, unsigned char *ats_length);
/* As OpenCard, keeping the answer for Reset_Card; leaves the read time-out at 1000 ms;
 * -38 for an answer over 100 bytes. */
QZ_32_API int QZ_32_CALL Open_Card(int icdev, unsigned char mode, unsigned char *uid);
/* Sends nothing: the answer kept by Open_Card (up to 100 bytes); -53 before any succeeded. */
QZ_32_API int QZ_32_CALL Reset_Card(int icdev, unsigned char *ats, unsigned char *ats_length);
/* One exchange, APDU up to 297 bytes, response up to 300; status words left to the caller. */
QZ_32_API int QZ_32_CALL ExchangePro(int icdev, const unsigned char *command, unsigned short command_length, unsigned char *response, unsigned short *response_length);
/* -1 on bad hex. */
QZ_32_API int QZ_32_CALL ExchangePro_hex(int icdev, const char *command, char *response);
QZ_32_API int QZ_32_CALL CloseCard(int icdev);
QZ_32_API int QZ_32_CALL ICC_PowerOn(int icdev, unsigned char slot, unsigned char *atr, unsigned char *atr_length);
/* `*atr_length` counts characters. */
QZ_32_API int QZ_32_CALL ICC_PowerOn_hex(int icdev, unsigned char slot, char *atr, unsigned char *atr_length);
/* `baud` 0x10, 0x20, 0x30, 0x40 or 0x50. */
QZ_32_API int QZ_32_CALL ICC_PowerOn_Baud(int icdev, unsigned char slot, unsigned char baud, unsigned char *atr, unsigned char *atr_length);
QZ_32_API int QZ_32_CALL ICC_Reset(int icdev, unsigned char slot, unsigned char *atr, unsigned char *atr_length);
QZ_32_API int QZ_32_CALL ICC_Reset_Baud(int icdev, unsigned char slot, unsigned char baud, unsigned char *atr, unsigned char *atr_length);
/* Follows 61xx and 6Cxx; the card's final status words end `response` (up to 1024
 * bytes). 0 says only that the link worked. At most 64 further commands follow a
 * card's 61xx and 6Cxx answers; a card still asking then gets no more, and its last
 * reply is handed over as it stands. A response that would outgrow 1024 bytes
 * (2048 for the _hex twin) gives -38 and nothing. APDUs up to 1021 bytes (2045). */
QZ_32_API int QZ_32_CALL ICC_CommandExchange(int icdev, unsigned char slot, const unsigned char *command, unsigned short command_length, unsigned char *response, unsigned short *response_length);
/* As ICC_CommandExchange in hex text, up to 2048 bytes each way; -1 on bad hex. */
QZ_32_API int QZ_32_CALL ICC_CommandExchange_hex(int icdev, unsigned char slot, const char *command, char *response);
QZ_32_API int QZ_32_CALL ICC_PowerOff(int icdev, unsigned char slot);

/* ---- Contactless memory cards: Mifare kind ------------------------------------- */

QZ_32_API int QZ_32_CALL rf_reset(int icdev);
/* `serial` gets the reply, the card's serial number: up to 16 bytes (a longer reply
 * gives -38). */
QZ_32_API int QZ_32_CALL rf_card(int icdev, unsigned char mode, unsigned char *serial);
/* `key` 6 bytes. */
QZ_32_API int QZ_32_CALL rf_authentication_key(int icdev, unsigned char mode, unsigned char sector, const unsigned char *key);
/* `data` 16 bytes; any other reply length gives -38 or -39. */
QZ_32_API int QZ_32_CALL rf_read(int icdev, unsigned char block, unsigned char *data);
/* `text` 33 bytes. */
QZ_32_API int QZ_32_CALL rf_read_hex(int icdev, unsigned char block, char *text);
/* `data` 16 bytes. */
QZ_32_API int QZ_32_CALL rf_write(int icdev, unsigned char block, const unsigned char *data);
/* `text` 32 hex digits; -1 otherwise. */
QZ_32_API int QZ_32_CALL rf_write_hex(int icdev, unsigned char block, const char *text);
/* Writes `block` as a value block holding `value`. */
QZ_32_API int QZ_32_CALL rf_initval(int icdev, unsigned char block, unsigned int value);
/* -49 block unreadable, -19 not a value block. */
QZ_32_API int QZ_32_CALL rf_readval(int icdev, unsigned char block, unsigned int *value);
/* Then transfers. -49 no readable value, -50 the sum would pass 0x7FFFFFFF. */
QZ_32_API int QZ_32_CALL rf_increment(int icdev, unsigned char block, unsigned int value);
/* Then transfers. -49 no readable value, -51 the stored value is below `value`. */
QZ_32_API int QZ_32_CALL rf_decrement(int icdev, unsigned char block, unsigned int value);
QZ_32_API int QZ_32_CALL rf_transfer(int icdev, unsigned char block);
QZ_32_API int QZ_32_CALL rf_restore(int icdev, unsigned char block);
QZ_32_API int QZ_32_CALL rf_terminal(int icdev);
QZ_32_API int QZ_32_CALL rf_halt(int icdev);
QZ_32_API int QZ_32_CALL rf_desele(int icdev);
QZ_32_API int QZ_32_CALL PICC_GetStatus(int icdev, unsigned char *status);
QZ_32_API int QZ_32_CALL PICC_GetStatus_EX(int icdev, unsigned char *status);
/* Own results: -22 bad handle, -23 exchange failed, -24 `*status` not 0. */
QZ_32_API int QZ_32_CALL rf_antenna(int icdev, unsigned char *status);
QZ_32_API int QZ_32_CALL ReadMulCardUid(int icdev, unsigned char *count, unsigned char *uids);

/* ---- Contactless memory cards: Ultralight class and NTAG215 --------------------- */
/* The MF_ and NTAG215_ functions return a signed 16-bit result; -1 is a refused
 * parameter there. */

/* Activates any contactless card; `*ats_length` is 0 on failure. */
QZ_32_API int QZ_32_CALL ActiveCard(int icdev, unsigned char mode, unsigned char *type, unsigned char *uid, unsigned char *ats, unsigned char *ats_length);
/* `uid` 7 bytes. */
QZ_32_API short QZ_32_CALL MF_OpenCard(int icdev, unsigned char mode, unsigned char *uid);
QZ_32_API short QZ_32_CALL MF_Authentication(int icdev, const unsigned char *key, unsigned char length);
/* `out` 4 bytes. */
QZ_32_API short QZ_32_CALL MF_Read(int icdev, unsigned char page, unsigned char *out);
/* `data` 4 bytes. */
QZ_32_API short QZ_32_CALL MF_Write_4bytes(int icdev, unsigned char page, const unsigned char *data);
/* Writes 4 bytes to the one-time programmable page 3. */
QZ_32_API short QZ_32_CALL MF_WriteOTp(int icdev, const unsigned char *data);
/* Sets the lock bit of `page` 3..39 or 42..47; -1 for any other page. */
QZ_32_API short QZ_32_CALL MF_WriteLock(int icdev, unsigned char page);
/* `uid` 7 bytes; leaves the read time-out at 2000 ms. */
QZ_32_API short QZ_32_CALL NTAG215_OpenCard(int icdev, unsigned char *uid);
/* `out` gets the whole reply, up to 100 bytes (a longer reply gives -38). */
QZ_32_API short QZ_32_CALL NTAG215_Read(int icdev, unsigned char page, unsigned char *out);
/* `data` 4 bytes. */
QZ_32_API short QZ_32_CALL NTAG215_Write_4bytes(int icdev, unsigned char page, const unsigned char *data);
/* `length` must be 4. */
QZ_32_API short QZ_32_CALL NTAG215_Authentication(int icdev, const unsigned char *key, unsigned char length);
/* Writes the 4-byte password; `length` must be 4. */
QZ_32_API short QZ_32_CALL NTAG215_ChangeKey(int icdev, const unsigned char *key, unsigned char length);
QZ_32_API short QZ_32_CALL NTAG215_WriteLock(int icdev);
/* New 4-byte password, `text` (up to 192 bytes) to pages 80.., the last page
 * filled with zeros behind the text, then lock. Stops at the failing step, undoing
 * nothing: -1 authentication (or no key or text), -2 password, -3 text page,
 * -4 lock, -5 text too long. */
QZ_32_API short QZ_32_CALL NTAG215_Init(int icdev, const unsigned char *key, const char *text);
/* Pages 80..127 as a terminated string; `out` 193 bytes. */
QZ_32_API short QZ_32_CALL NTAG215_ReadBaseInfo(int icdev, unsigned char *out);

/* ---- Contact memory cards -------------------------------------------------------- */

QZ_32_API int QZ_32_CALL open_record(int icdev);
QZ_32_API int QZ_32_CALL close_record(int icdev);
QZ_32_API int QZ_32_CALL nt_record(int icdev, unsigned int value, unsigned char *out);
QZ_32_API int QZ_32_CALL contact_select(int icdev, unsigned char slot);
/* `*type` 3 SLE4428, 4 SLE4442, 5 another memory card, 0xFF all zeros or all ones;
 * -20 an answer of no known card. */
QZ_32_API int QZ_32_CALL contact_verify(int icdev, unsigned char *type);

/* SLE4442: 256 bytes, 32 protection bits, 3-byte PSC. `*flag` 0 yes, 1 no, 0xFF the
 * card answered all zeros or all ones. */
QZ_32_API int QZ_32_CALL sle4442_is42(int icdev, unsigned char *flag);
/* `offset` + `length` at most 256. */
QZ_32_API int QZ_32_CALL sle4442_read(int icdev, unsigned char offset, unsigned short length, unsigned char *out);
QZ_32_API int QZ_32_CALL sle4442_write(int icdev, unsigned char offset, unsigned short length, const unsigned char *data);
QZ_32_API int QZ_32_CALL sle4442_pwd_check(int icdev, const unsigned char *psc);
QZ_32_API int QZ_32_CALL sle4442_pwd_read(int icdev, unsigned char *out);
QZ_32_API int QZ_32_CALL sle4442_pwd_modify(int icdev, const unsigned char *psc);
QZ_32_API int QZ_32_CALL sle4442_probit_read(int icdev, unsigned char *rlen, unsigned char *out);
/* `offset` + `length` at most 32. */
QZ_32_API int QZ_32_CALL sle4442_probit_write(int icdev, unsigned char offset, unsigned short length, const unsigned char *data);
QZ_32_API int QZ_32_CALL sle4442_errcount_read(int icdev, unsigned char *out);

/* SLE4428: 1024 bytes with a protection bit each, 2-byte PSC. `offset` 0..1023,
 * `length` 1..1024, their sum at most 1024; moved in chunks of 256. */
QZ_32_API int QZ_32_CALL sle4428_is28(int icdev, unsigned char *flag);
QZ_32_API int QZ_32_CALL sle4428_read(int icdev, unsigned short offset, unsigned short length, unsigned char *out);
QZ_32_API int QZ_32_CALL sle4428_write(int icdev, unsigned short offset, unsigned short length, const unsigned char *data);
QZ_32_API int QZ_32_CALL sle4428_pwd_check(int icdev, const unsigned char *psc);
QZ_32_API int QZ_32_CALL sle4428_pwd_modify(int icdev, const unsigned char *psc);
/* Chunks of 128 positions, each given 256 bytes of `out`. In every chunked
 * transfer a chunk's reply longer than 256 bytes gives -38. */
QZ_32_API int QZ_32_CALL sle4428_probit_readdata(int icdev, unsigned short offset, unsigned short length, unsigned char *out);
QZ_32_API int QZ_32_CALL sle4428_probit_writedata(int icdev, unsigned short offset, unsigned short length, const unsigned char *data);
QZ_32_API int QZ_32_CALL sle4428_errcount_read(int icdev, unsigned char *out);

/* AT88SC102: 2-byte security code, two 64-byte zones with 6-byte erase keys,
 * 8-byte issuer and protection areas. Zone `offset` 0..63, `length` 1..64. */
QZ_32_API int QZ_32_CALL at88sc102_pwd_check(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_pwd_modify(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_pwd_read(int icdev, unsigned char *out);
/* The reply is copied back over `data`. */
QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_check(int icdev, unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_check(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_modify(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_modify(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_read(int icdev, unsigned char *out);
QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_read(int icdev, unsigned char *out);
/* `out` 1 byte. */
QZ_32_API int QZ_32_CALL at88sc102_pwd_errorcount(int icdev, unsigned char *out);
/* `out` 1 byte. */
QZ_32_API int QZ_32_CALL at88sc102_ua2_fusecount(int icdev, unsigned char *out);
/* `sel` 1..4. */
QZ_32_API int QZ_32_CALL at88sc102_probit_clr(int icdev, unsigned char sel);
QZ_32_API int QZ_32_CALL at88sc102_ua1_readdata(int icdev, unsigned char offset, unsigned char length, unsigned char *out);
QZ_32_API int QZ_32_CALL at88sc102_ua2_readdata(int icdev, unsigned char offset, unsigned char length, unsigned char *out);
/* Erases zone 1 and reads it back: -52 if a byte isn't 0xFF. */
QZ_32_API int QZ_32_CALL at88sc102_ua1_clrdata(int icdev);
/* `sel` 1 or 2; erases zone 2 and reads it back: -52 if a byte isn't 0xFF. */
QZ_32_API int QZ_32_CALL at88sc102_ua2_clrdata(int icdev, unsigned char sel);
QZ_32_API int QZ_32_CALL at88sc102_Anafuse(int icdev);
QZ_32_API int QZ_32_CALL at88sc102_Anafuse_cancel(int icdev);
QZ_32_API int QZ_32_CALL at88sc102_ua1_modifydata(int icdev, unsigned char offset, unsigned char length, const unsigned char *data);
/* `sel` 1 or 2. */
QZ_32_API int QZ_32_CALL at88sc102_ua2_modifydata(int icdev, unsigned char sel, unsigned char offset, unsigned char length, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_fuse_issuerfuse(int icdev);
QZ_32_API int QZ_32_CALL at88sc102_fuse_ec2enfuse(int icdev);
QZ_32_API int QZ_32_CALL at88sc102_is102(int icdev, unsigned char *out);
QZ_32_API int QZ_32_CALL at88sc102_issuer_write(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_issuer_read(int icdev, unsigned char *out);
QZ_32_API int QZ_32_CALL at88sc102_protect_write(int icdev, const unsigned char *data);
QZ_32_API int QZ_32_CALL at88sc102_protect_read(int icdev, unsigned char *out);

/* AT88SC1604: `zone` 0..5 for data, `offset` and `length` within the zone. */
QZ_32_API int QZ_32_CALL srd_1604(int icdev, int zone, int offset, int length, unsigned char *out);
QZ_32_API int QZ_32_CALL swr_1604(int icdev, int zone, int offset, int length, const unsigned char *data);
/* Waits up to 30 s; leaves the write gap at 10 ms. */
QZ_32_API int QZ_32_CALL ser_1604(int icdev, int zone, int offset, int length);
/* Erases and writes a zone's security code: `zone` 0..8, `length` 2. */
QZ_32_API int QZ_32_CALL wsc_1604(int icdev, int zone, int length, const unsigned char *data);
/* Checks a security code: `zone` 0..4, `length` 2. */
QZ_32_API int QZ_32_CALL csc_1604(int icdev, int zone, int length, const unsigned char *data);
/* Checks an erase key: `zone` 1..4, `length` 2. */
QZ_32_API int QZ_32_CALL cesc_1604(int icdev, int zone, int length, const unsigned char *data);
/* `value` 0 or 1. */
QZ_32_API int QZ_32_CALL fakefus_1604(int icdev, int value);
QZ_32_API int QZ_32_CALL psnl_1604(int icdev);

/* AT24C01A: `offset` + `length` at most 127; `length` 0 is sent. */
QZ_32_API int QZ_32_CALL at24c01a_read(int icdev, unsigned short offset, unsigned short length, unsigned char *out);
QZ_32_API int QZ_32_CALL at24c01a_write(int icdev, unsigned short offset, unsigned short length, const unsigned char *data);

/* ---- PIN entry -------------------------------------------------------------------- */

/* Terminal keypad. `timeout` in seconds; the read time-out is 5000 ms afterwards.
 * `rdata` gets the whole reply (up to 300 bytes). */
QZ_32_API int QZ_32_CALL dev_pwdkb(int icdev, unsigned char timeout, unsigned char mode, unsigned char length, const unsigned char *data, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd(int icdev, unsigned char timeout, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_again(int icdev, unsigned char timeout, unsigned char *rlen, unsigned char *rdata);
/* Keyed under a fresh session key from the system's random source, decrypted
 * here: `rdata` 16 bytes, `*rlen` 8 or 16; -39 for a reply under one 8-byte block. */
QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_encrypt(int icdev, unsigned char timeout, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_again_encrypt(int icdev, unsigned char timeout, unsigned char *rlen, unsigned char *rdata);

/* External PIN pad. PIN entries return -66 until pwdkb_settimeout and -65 until
 * pwdkb_setpwdlen has succeeded once in the process. Replies are up to 50 bytes. */
/* `seconds` at least 6. */
QZ_32_API int QZ_32_CALL pwdkb_settimeout(int icdev, unsigned char seconds);
/* `length` 1..18. */
QZ_32_API int QZ_32_CALL pwdkb_setpwdlen(int icdev, unsigned char length);
/* `keymode` 0: 8-byte key, 1: 16-byte key. `mainno` isn't checked: any number goes to
 * the pad, which has its own limit; the host keeps a copy of main keys 0 to 15 only. */
QZ_32_API int QZ_32_CALL pwdkb_load_mainkey(int icdev, unsigned char keymode, unsigned char mainno, const unsigned char *key);
/* `key` as the pad expects it: encrypted under main key `mainno`. */
QZ_32_API int QZ_32_CALL pwdkb_load_workkey(int icdev, unsigned char keymode, unsigned char mainno, unsigned char workno, const unsigned char *key);
QZ_32_API int QZ_32_CALL pwdkb_getpwd(int icdev, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_again(int icdev, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd2(int icdev, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_again2(int icdev, unsigned char *rlen, unsigned char *rdata);
/* `mode` 1..4 picks the entry style. */
QZ_32_API int QZ_32_CALL pwdkb_getpwd_new2(int icdev, int mode, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_new2_WaitNextKeyPress(int icdev, unsigned char *rlen, unsigned char *rdata);
/* `cardno` 6 bytes of the card number; `rdata` gets the pad's cipher text. On success
 * `keyno`, whatever its value, becomes the current work key of pwd_decrypt. */
QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt(int icdev, unsigned char keyno, const unsigned char *cardno, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_again_encrypt(int icdev, unsigned char keyno, const unsigned char *cardno, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt2(int icdev, unsigned char keyno, const unsigned char *cardno, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_again_encrypt2(int icdev, unsigned char keyno, const unsigned char *cardno, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt_new2(int icdev, unsigned char keyno, const unsigned char *cardno, int mode, unsigned char *rlen, unsigned char *rdata);
QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt_new2_WaitNextKeyPress(int icdev, unsigned char *rlen, unsigned char *rdata);

/* The same pad with hex text keys: main keys 0..3, work keys 0..7; -1 on bad hex. */
/* Sends nothing; both arguments are ignored. */
QZ_32_API int QZ_32_CALL mw_kb_open(int reserved1, int reserved2);
/* Puts the read time-out back to 5000 ms. */
QZ_32_API int QZ_32_CALL mw_kb_close(int icdev);
/* 1: the pad type with separate first and repeat entries; any other: the newer pad. */
QZ_32_API void QZ_32_CALL set_kb_type(int type);
QZ_32_API int QZ_32_CALL set_kb_outputMode(int icdev, int mode);
QZ_32_API int QZ_32_CALL mw_kb_settimeout(int icdev, unsigned char seconds);
QZ_32_API int QZ_32_CALL mw_kb_setpasslen(int icdev, unsigned char length);
/* `keytext` 16 hex digits for `keymode` 0, 32 for 1. */
QZ_32_API int QZ_32_CALL mw_kb_downloadmainkey(int icdev, int keymode, int mainno, const char *keytext);
QZ_32_API int QZ_32_CALL mw_kb_downloaduserkey(int icdev, int keymode, int mainno, int workno, const char *keytext);
/* No range check of `mainno` and `workno`. */
QZ_32_API int QZ_32_CALL mw_kb_downloaduserkey_nb(int icdev, int keymode, unsigned char mainno, unsigned char workno, const char *keytext);
/* Sends nothing: picks the work key of mw_kb_getenpin and pwd_decrypt. */
QZ_32_API int QZ_32_CALL mw_kb_activekey(int icdev, int mainno, int workno);
/* `mode` 1..4; `out` gets the pad's reply as raw bytes, no terminator. */
QZ_32_API int QZ_32_CALL mw_kb_getpin(int icdev, int mode, unsigned char *out);
/* `mode` 1..4; `cardtext` 12 hex digits; `outtext` up to 33 bytes. */
QZ_32_API int QZ_32_CALL mw_kb_getenpin(int icdev, int mode, const char *cardtext, char *outtext);
/* `mode` 1 or 2; `outtext` up to 33 bytes. */
QZ_32_API int QZ_32_CALL mw_kb_getenpin_nb(int icdev, int mode, unsigned char keyno, char *outtext);

/* ---- Bank cards --------------------------------------------------------------------- */
/* PAN as ASCII digits (room: 38 bytes, or twice tag 57 plus 1; terminated only when it
 * comes from tag 57), name as stored on the card (room: 500 bytes, not terminated).
 * Besides 0: the status of opening the card; -19 a selection, directory read or GPO
 * failed; -21 a needed tag is missing. */

/* Contact or contactless, by dev_cardstate. */
QZ_32_API int QZ_32_CALL GetPanNoCardHldName(int icdev, unsigned char *sPan, unsigned short *nPanLen, unsigned char *sCardHldName, unsigned short *nCardHldNameLen);
QZ_32_API int QZ_32_CALL NC_GetPanNoCardHldName(int icdev, unsigned char *sPan, unsigned short *nPanLen, unsigned char *sCardHldName, unsigned short *nCardHldNameLen);
QZ_32_API int QZ_32_CALL ICC_GetPanNoCardHldName(int icdev, unsigned char slot, unsigned char *sPan, unsigned short *nPanLen, unsigned char *sCardHldName, unsigned short *nCardHldNameLen);
/* Magnetic stripe. `mode` 0 or 1. */
QZ_32_API int QZ_32_CALL setmagic_mode(int icdev, unsigned char mode);
/* Each track up to 255 bytes, not terminated. */
QZ_32_API int QZ_32_CALL readmagic_data(int icdev, unsigned char *track1_length, unsigned char *track1, unsigned char *track2_length, unsigned char *track2, unsigned char *track3_length, unsigned char *track3);

/* ---- Identity cards ------------------------------------------------------------------- */

/* `nMode` 0: text and photo, 1: also finger data. `sBaseInfo` fields joined by "|"
 * (up to 3096 bytes), `sFingerInfo` hex text (up to 2060 bytes); `sPhotoPath` null
 * for no photo, else at most 254 characters. Besides 0: -1 path too long, -50 the
 * module failed, -2..-8 or -110 the photo wasn't decoded. */
QZ_32_API int QZ_32_CALL IDReadCard(int icdev, int nMode, const char *sPhotoPath, char *sBaseInfo, char *sFingerInfo);
/* The raw reply, up to 3096 bytes; -50 the module failed. */
QZ_32_API int QZ_32_CALL IDCardBaseMsg(int icdev, int nMode, int *nDataLen, unsigned char *sData);
QZ_32_API int QZ_32_CALL IDCardGetModeID(int icdev, unsigned char *nIdLen, unsigned char *sModeId);
/* Reads up to 2 MiB of the file into `sBase64` (up to 2796204 characters, no terminator).
 * Result: characters written + 1, or -19. */
QZ_32_API int QZ_32_CALL GetFileBase64Buffer(const char *sFileName, char *sBase64);
/* Waits up to `nTimeout` seconds for a code (up to 1024 bytes); -1 the scanner's
 * acknowledgement is wrong. */
QZ_32_API int QZ_32_CALL GetTwoDimensionCode(int icdev, int nTimeout, char *sCodeText);

/* ---- Screen: 800 x 480 colour screen and 4 x 16 line LCD ------------------------------ */
/* Colours are strings "r,g,b" of decimal 0..255. */

QZ_32_API int QZ_32_CALL SetFullScreenColor(int icdev, const char *color);
QZ_32_API int QZ_32_CALL ClearFullScreen(int icdev);
/* `page` 0..4; leaves the read time-out at 2000 ms. */
QZ_32_API int QZ_32_CALL ActiveShowPic(int icdev, int page);
/* `time` 0..65535, passed on unchanged. */
QZ_32_API int QZ_32_CALL SetAutoSleepTime(int icdev, int time);
QZ_32_API int QZ_32_CALL SetScreenVendor(int icdev, unsigned char vendor);
/* `vendor` gets a terminated text, empty after a failure (up to 1025 bytes). */
QZ_32_API int QZ_32_CALL GetScreenVendor(int icdev, char *vendor);
/* `text` 1..2078 bytes; `fontSize` rounded to 16..240 pixels; null colours: blue on
 * white; `wrapMode` 1 wraps, else cuts. -19 also when the font component fails. */
QZ_32_API int QZ_32_CALL ShowTextInScreen(int icdev, const char *text, int fontSize, const char *fontColor, const char *backColor, int x, int y, int wrapMode, int textOption);
/* The picture must fit at (x, y). */
QZ_32_API int QZ_32_CALL ShowPicInScreen(int icdev, const char *path, int x, int y, int reserved1, int reserved2);
/* Stores an 800 x 480 picture in `page` (0: the shown page); x and y must be 0. */
QZ_32_API int QZ_32_CALL LoadPicInScreen(int icdev, int page, const char *path, int x, int y, int reserved1, int reserved2);
/* Draws the black content of the picture, one bit a pixel. */
QZ_32_API int QZ_32_CALL ShowMonochromeInScreen(int icdev, const char *path, int x, int y, int reserved1, int reserved2);
/* Line LCD: `line` 0..3, `column` 0..14 (0..15 for the others), `length` at most
 * 16 - `column`; the library renders the glyphs. */
QZ_32_API int QZ_32_CALL lcd_display_string(int icdev, int line, int column, int length, const unsigned char *text);
QZ_32_API int QZ_32_CALL lcd_display_string2(int icdev, int line, int column, int length, const unsigned char *text);
/* The terminal renders the text. */
QZ_32_API int QZ_32_CALL lcd_display_new(int icdev, int line, int column, int length, const unsigned char *text);
QZ_32_API int QZ_32_CALL lcd_clear(int icdev);
/* `level` 0 or 1. */
QZ_32_API int QZ_32_CALL adjusts_Brightness(int icdev, unsigned char level);
QZ_32_API int QZ_32_CALL backlight_Delay(int icdev, unsigned char delay);

/* ---- Firmware and barcode scanner ------------------------------------------------------- */

/* Keyboard version text, up to 98 bytes, not terminated. */
QZ_32_API int QZ_32_CALL get_cktkb_verion(int icdev, unsigned int *length, unsigned char *version);
/* Intel HEX file; `path` is upper-cased in place. -89 not ".HEX" or unreadable,
 * -86 no loader or no end record, -88 short read, -96 out of memory. */
QZ_32_API int QZ_32_CALL upgrade_keyboard(int icdev, char *path);
/* `wait` 2..10; the code must come within the current read time-out. */
QZ_32_API int QZ_32_CALL get_barcode(int icdev, unsigned char wait, unsigned char *length, unsigned char *data);
/* `wait` 2..10. */
QZ_32_API int QZ_32_CALL get_barcode_continuous(int icdev, unsigned char wait);
QZ_32_API int QZ_32_CALL set_scaner_output(int icdev, unsigned char mode);
/* Scanner version text, not terminated; outputs unchanged for a reply under 3 bytes. */
QZ_32_API int QZ_32_CALL GetScanerVer(int icdev, unsigned int *length, unsigned char *version);
/* Raw firmware file; `callback` may be null. -97 no loader, -52 -3 -35 -1 -181 a
 * preparing step refused, -89 file unopenable, -2 short read, -96 out of memory or a
 * package refused. */
QZ_32_API int QZ_32_CALL upgrade_scaner(int icdev, const char *path, qz_32_upgrade_progress_callback callback);

/* ---- Card mechanism ------------------------------------------------------------------------ */

/* Pass-through to the mechanism: `length` at least 1; `*rlen` is 0 after a failure. */
QZ_32_API int QZ_32_CALL ds_command_trn(int icdev, const unsigned char *data, unsigned short length, unsigned char *out, unsigned short *rlen);
QZ_32_API int QZ_32_CALL return_card(int icdev);
QZ_32_API int QZ_32_CALL magnetic_gate_test(int icdev, unsigned char value);
QZ_32_API int QZ_32_CALL motor_test(int icdev, unsigned char first, unsigned char second);
QZ_32_API int QZ_32_CALL Query_status(int icdev, unsigned int *status);
QZ_32_API int QZ_32_CALL AGING_test(int icdev, unsigned char value, unsigned int *status);
/* `direction` 0 or 1. */
QZ_32_API int QZ_32_CALL Move_Card(int icdev, int direction);
QZ_32_API int QZ_32_CALL Get_CARD_ID(int icdev, unsigned char *out);
QZ_32_API int QZ_32_CALL Get_CARD_ID_hex(int icdev, char *out);
/* `*status` is 0 after a failure. */
QZ_32_API int QZ_32_CALL get_device_status(int icdev, unsigned char *status);

#endif /* QZ_32_H */
