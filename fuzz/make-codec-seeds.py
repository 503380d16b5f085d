#!/usr/bin/env python3
"""Writes the seeds shared by the encoding engine's fuzz targets into fuzz/seeds/codec/.

Each seed is valid text in one code set with one byte that steers a detector or converter
standing in its middle, between two characters or in place of the last byte of one. The replay cuts every seed at every length from either end, and the
64 bytes of ASCII in front of the text let the cuts from the front move that byte through
every offset of the 32- and 64-byte blocks of the fast paths while the text stays valid.
Usage: fuzz/make-codec-seeds.py
"""
import pathlib

# Controls, escape bodies, the edges of the lead, trail, katakana and UTF-8 ranges, and their
# images with the eighth bit set.
INTERESTING = bytes([
    0x00, 0x09, 0x0A, 0x0D, 0x1B, 0x24, 0x28, 0x42, 0x40, 0x49, 0x4A, 0x48, 0x44, 0x4F, 0x50,
    0x26, 0x20, 0x21, 0x22, 0x41, 0x5F, 0x60, 0x7E, 0x7F, 0x80, 0x81, 0x82, 0x8E, 0x8F, 0x9B,
    0x9F, 0xA0, 0xA1, 0xA2, 0xA4, 0xA8, 0xB0, 0xB6, 0xBB, 0xBF, 0xC0, 0xC2, 0xC3, 0xCA, 0xD8,
    0xDC, 0xDE, 0xDF, 0xE0, 0xE3, 0xEF, 0xF0, 0xF8, 0xFC, 0xFD, 0xFE, 0xFF])

ASCII = b"Plain text\tskipped a block at a time, with CR LF\r\nand a lone LF\n"
assert len(ASCII) == 64

# Kanji whose trail bytes cover both trail ranges, katakana whose Shift_JIS is a long run of
# lead bytes (each trail is one too), kana with sound marks that merge and that do not, and an
# ASCII run long enough for a block of its own. The steering byte goes between the two halves,
# inside a kanji stretch.
HEAD = "メモヤユヨラリルレロ亜漢字と、かな。ｶﾞﾊﾟｳﾞﾅﾞｱ ＡＢ\r\nan ASCII run between characters, as long as a block\n予定"
TAIL = "表示ソ能ボ\r\nメモヤユヨラリルレロ亜カタカナ ｶﾀｶﾅ 平仮名、片仮名と漢字。\r\n第二行の終わりまで日本語の文章です\n"


def encoded(codec):
    if codec != "iso2022_jp_ext":
        return HEAD.encode(codec), TAIL.encode(codec)
    # Split one kanji stretch: the head does not return to ASCII, the tail does not announce it.
    return HEAD.encode(codec)[:-3], TAIL.encode(codec)[3:]


BACKGROUNDS = {"sjis": "cp932", "euc": "euc_jp", "jis": "iso2022_jp_ext", "utf8": "utf-8",
               "utf16": "utf-16-le"}

# Escapes, characters of every code set and UTF-8 sequences of every length, back to back:
# the cuts from either end leave each of them cut at every byte.
TOKENS = (b"\x1b$@0!\x1b$B$\"\x1b$(D0!\x1b$(O0!\x1b$(P0!\x1b&@\x1b$B0!\x1b(I1\x1b(B\x1b(J~"
          b"\x1b(H\x1b(\x1b$$B(B(I&@$\"0!\r\n\xef\xbb\xbf\xff\xfe\x82\xa0\x88\x9f\xea\xa4\xf0@"
          b"\xb6\xde\xca\xdf\xb3\xde\xa4\xa2\x8e\xb1\x8f\xb0\xa1\xc8\xfe\xe3\x81\x82\xc3\xa9"
          b"\xf0\x9f\x98\x80\xf8\x88\x80\x80\x80\xfc\x84\x80\x80\x80\x80\xed\xa0\xbd\r\0\n\0")


def main():
    folder = pathlib.Path(__file__).resolve().parent / "seeds" / "codec"
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    for name, codec in BACKGROUNDS.items():
        head, tail = encoded(codec)
        for byte in INTERESTING:
            seed = ASCII + head + bytes([byte]) + tail
            (folder / f"{name}-{byte:02x}").write_bytes(seed)
            if name in ("sjis", "euc", "utf8"):
                # In place of the last byte of a character, where the block masks must see it.
                seed = ASCII + head[:-1] + bytes([byte]) + tail
                (folder / f"{name}-last-{byte:02x}").write_bytes(seed)
    # A UTF-8 sequence one continuation byte short, among two-byte characters only, so that the
    # block that holds it has nothing else wrong with it.
    latin = "Ünïcödé ßträße àéîõü ".encode("utf-8")
    for lead in (b"\xc3", b"\xe3\x81", b"\xf0\x9f\x98", b"\xf8\x88\x80\x80",
                 b"\xfc\x84\x80\x80\x80"):
        seed = ASCII + latin + lead + b"A" + latin * 3
        (folder / f"utf8-short-{lead[0]:02x}").write_bytes(seed)
    (folder / "tokens").write_bytes(ASCII + TOKENS)
    (folder / "tokens-reversed").write_bytes(ASCII + TOKENS[::-1])


if __name__ == "__main__":
    main()
