// code_page.cc
#include "kernel32/code_page.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace machine {
namespace {

// The five bytes that the code page leaves open stand for the control characters of the same number.
constexpr char16_t kFrom0x80To0x9f[] = {0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                        0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f,
                                        0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                        0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

struct Run {
  char16_t first;
  std::string_view bytes;  // of the characters from `first` on
};

// What Windows takes for characters that the code page doesn't have, in the order of the characters.
constexpr Run kBestFit[] = {
    {0x100, "AaAaAaCcCcCcCcDd\320dEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIi"},
    {0x134, "JjKk"},
    {0x139, "LlLlLl"},
    {0x141, "LlNnNnNn"},
    {0x14c, "OoOoOo"},
    {0x154, "RrRrRrSsSsSs"},
    {0x162, "TtTtTtUuUuUuUuUuUuWwYy"},
    {0x179, "ZzZz"},
    {0x180, "b"},
    {0x189, "\320"},
    {0x191, "\203"},
    {0x197, "I"},
    {0x19a, "l"},
    {0x19f, "OOo"},
    {0x1ab, "t"},
    {0x1ae, "TUu"},
    {0x1b6, "z"},
    {0x1c0, "|"},
    {0x1c3, "!"},
    {0x1cd, "AaIiOoUuUuUuUuUu"},
    {0x1de, "Aa"},
    {0x1e4, "GgGgKkOoOo"},
    {0x1f0, "j"},
    {0x261, "g"},
    {0x2b9, "'\""},
    {0x2bc, "'"},
    {0x2c4, "^"},
    {0x2c8, "'\257\264`"},
    {0x2cd, "_"},
    {0x2da, "\260"},
    {0x300, "`\264^~\257\257"},
    {0x308, "\250"},
    {0x30a, "\260"},
    {0x30e, "\""},
    {0x327, "\270"},
    {0x331, "__"},
    {0x37e, ";"},
    {0x393, "G"},
    {0x398, "T"},
    {0x3a3, "S"},
    {0x3a6, "F"},
    {0x3a9, "O"},
    {0x3b1, "a\337"},
    {0x3b4, "de"},
    {0x3bc, "\265"},
    {0x3c0, "p"},
    {0x3c3, "st"},
    {0x3c6, "f"},
    {0x4bb, "h"},
    {0x589, ":"},
    {0x66a, "%"},
    {0x2000, "       "},
    {0x2010, "--"},
    {0x2017, "="},
    {0x2024, "\267"},
    {0x2032, "'"},
    {0x2035, "`"},
    {0x2044, "/"},
    {0x2070, "\260"},
    {0x2074, "45678"},
    {0x207f, "n0123456789"},
    {0x20a1, "\242"},
    {0x20a4, "\243"},
    {0x20a7, "P"},
    {0x2102, "C"},
    {0x2107, "E"},
    {0x210a, "gHHHh"},
    {0x2110, "IILl"},
    {0x2115, "N"},
    {0x2118, "PPQRRR"},
    {0x2124, "Z"},
    {0x2128, "Z"},
    {0x212a, "K\305BCeeEF"},
    {0x2133, "Mo"},
    {0x2205, "\330"},
    {0x2212, "-\261"},
    {0x2215, "/\\*\260\267v"},
    {0x221e, "8"},
    {0x2223, "|"},
    {0x2229, "n"},
    {0x2236, ":"},
    {0x223c, "~"},
    {0x2248, "\230"},
    {0x2261, "="},
    {0x2264, "=="},
    {0x226a, "\253\273"},
    {0x22c5, "\267"},
    {0x2302, "\246^"},
    {0x2310, "\254"},
    {0x2320, "()"},
    {0x2329, "<>"},
    {0x2500, "-"},
    {0x2502, "\246"},
    {0x250c, "+"},
    {0x2510, "+"},
    {0x2514, "+"},
    {0x2518, "+"},
    {0x251c, "+"},
    {0x2524, "\246"},
    {0x252c, "-"},
    {0x2534, "-"},
    {0x253c, "+"},
    {0x2550, "-\246++++++++++++\246\246\246\246\246\246------+++"},
    {0x2580, "\257"},
    {0x2584, "_"},
    {0x2588, "\246"},
    {0x258c, "\246"},
    {0x2590, "\246\246\246\246"},
    {0x25a0, "\246"},
    {0x263c, "\244"},
    {0x2758, "|"},
    {0x3000, " "},
    {0x3008, "<>\253\273"},
    {0x301a, "[]"},
    {0x30fb, "\267"},
    {0xff01, "!\"#$%&'()*+,-./0123456789:;<=>"},
    {0xff20, "@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~"},
};

}  // namespace

char16_t FromCodePage1252(uint8_t byte) {
  return byte >= 0x80 && byte < 0xa0 ? kFrom0x80To0x9f[byte - 0x80] : byte;
}

int ToCodePage1252(char16_t unit, bool bestFit) {
  if (unit < 0x80 || (unit >= 0xa0 && unit < 0x100)) return unit;
  const auto* known = std::find(std::begin(kFrom0x80To0x9f), std::end(kFrom0x80To0x9f), unit);
  if (known != std::end(kFrom0x80To0x9f)) return 0x80 + static_cast<int>(known - kFrom0x80To0x9f);
  if (!bestFit) return -1;
  const auto* after = std::upper_bound(std::begin(kBestFit), std::end(kBestFit), unit,
                                       [](char16_t value, const Run& run) { return value < run.first; });
  if (after == std::begin(kBestFit)) return -1;
  const Run& run = *(after - 1);
  size_t at = unit - run.first;
  return at < run.bytes.size() ? static_cast<uint8_t>(run.bytes[at]) : -1;
}

}  // namespace machine
