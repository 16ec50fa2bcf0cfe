/* libFontMaker.so: renders one row of GBK text to one-bit glyph bitmaps.
 *
 * int getFontBit(const char *row, int size, unsigned char *buffer,
 *                int *bitLen, int *textCount, int *fontHeight);
 *
 * `row` is NUL-terminated GBK. A byte with its top bit set opens a two-byte
 * character, drawn full width (`size` pixels); any other byte is a one-byte
 * character, drawn half width (`size` / 2 pixels). A lead byte without its
 * second byte is one blank full-width glyph. Characters the font lacks are blank.
 *
 * Bit layout. With S = `size` and P = S raised to a multiple of 8, every glyph
 * takes S * P / 8 bytes, and the glyphs of the row lie back to back in `buffer`
 * in the order of the text. A glyph is S rows from the top, each row P / 8 bytes;
 * in a row the leftmost pixel is the top bit of the first byte. A full-width
 * glyph uses columns 0 .. S-1, a half-width one columns 0 .. S/2-1; the other
 * bits are 0. A set bit is ink (the foreground colour).
 *
 * Out: *bitLen = glyph count * S * P / 8, *textCount = glyph count, *fontHeight
 * = S. The caller gives a zeroed `buffer` of at least *bitLen bytes.
 * Result: 1, or 0 (nothing written) for a size outside 1..255, a null argument
 * or a font that cannot be loaded. */
#ifndef QZ_32_FONT_BITS_H
#define QZ_32_FONT_BITS_H

#ifdef __cplusplus
extern "C" {
#endif

int getFontBit(const char *row, int size, unsigned char *buffer, int *bitLen, int *textCount, int *fontHeight);

#ifdef __cplusplus
}
#endif

#endif
