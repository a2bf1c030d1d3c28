#include "accessfile/file/Header.h"

#include "accessfile/Error.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>

namespace accessfile {

namespace {
// Layout of page 0; from 0x18 on, 128 bytes are masked:
//
//   offset size
//     0x00    4  00 01 00 00
//     0x04   16  name of the format
//     0x14    4  generation: 1 for the one served here
//     0x18    4  pointer to the map of free pages: row 0 of page 1
//     0x1C    4  pointer to the map of released pages: row 1 of page 1
//     0x20  4*4  definition pages of the catalog's tables: 2 to 5
//     0x3C    2  code page
//     0x3E    4  key of the page encoding, 0 for none
//     0x42   40  database password, UTF-16, masked again by the stamp
//     0x6A    4  build of the engine that made the file
//     0x6E    4  order of texts: language, 0, version
//     0x72    8  creation stamp, a date
//     0x98    8  version
//    0xE00  512  256 commit slots, one for each user; 00 01 is idle
constexpr std::size_t nameAt = 0x04;
constexpr std::size_t nameLength = 15;
constexpr std::size_t generationAt = 0x14;
constexpr std::size_t maskStart = 0x18;
constexpr std::size_t maskLength = 128;
constexpr std::size_t freeMapAt = 0x18;
constexpr std::size_t releasedMapAt = 0x1C;
constexpr std::size_t catalogAt = 0x20;
constexpr std::size_t codePageAt = 0x3C;
constexpr std::size_t pageKeyAt = 0x3E;
constexpr std::size_t passwordStart = 0x42;
constexpr std::size_t passwordLength = 40;
constexpr std::size_t buildAt = 0x6A;
constexpr std::size_t orderStart = 0x6E;
constexpr std::size_t orderVersionAt = 0x71;
constexpr std::size_t stampStart = 0x72;
constexpr std::size_t versionAt = 0x98;
constexpr std::size_t commitSlotsAt = 0xE00;
constexpr std::size_t commitSlots = 256;
constexpr std::uint32_t fileMark = 0x00000100;
constexpr std::uint16_t westernCodePage = 1252;
constexpr std::uint32_t usualBuild = 9756;
constexpr std::uint16_t generalLanguage = 0x0409;
constexpr std::uint32_t maskKey = 0x6B39DAC7;
constexpr std::string_view formatName = "Standard Jet DB";
} // namespace

void applyRc4(std::uint32_t key, std::span<std::uint8_t> bytes)
{
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::array<std::uint8_t, 4> keyBytes{};
    store32(keyBytes.data(), key);
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + keyBytes[i % keyBytes.size()]);
        std::swap(state[i], state[j]);
    }
    std::uint8_t a = 0;
    std::uint8_t b = 0;
    for (std::uint8_t& byte : bytes) {
        a = static_cast<std::uint8_t>(a + 1);
        b = static_cast<std::uint8_t>(b + state[a]);
        std::swap(state[a], state[b]);
        byte = static_cast<std::uint8_t>(byte ^ state[static_cast<std::uint8_t>(state[a] + state[b])]);
    }
}

void applyHeaderMask(PageBytes& page)
{
    applyRc4(maskKey, std::span(page).subspan(maskStart, maskLength));
}

Header::Header(const PageBytes& page)
    : m_plain(page)
{
    const std::string_view name(reinterpret_cast<const char*>(page.data() + nameAt), nameLength);
    const std::uint32_t generation = load32(page.data() + generationAt);
    if (load32(page.data()) != fileMark || (name != formatName && name != "Standard ACE DB"))
        throw Error(ErrorKind::NotADatabase, "O arquivo não é um banco de dados do Access.");
    if (name != formatName || generation > 1)
        throw Error(ErrorKind::NotADatabase,
                    "O arquivo é do Access 2007 ou mais novo (.accdb), que não é atendido. Salve-o no formato do "
                    "Access 2000-2003 (.mdb).");
    if (generation == 0)
        throw Error(ErrorKind::NotADatabase, "O arquivo é do Access 97 ou anterior, que não é atendido. Converta-o "
                                             "para o formato do Access 2000-2003.");
    applyHeaderMask(m_plain);
}

std::array<std::uint8_t, 4> Header::stampMask() const
{
    const double stamp = loadDouble(m_plain.data() + stampStart);
    // A damaged stamp must not reach the cast.
    const double whole = std::isfinite(stamp) && std::fabs(stamp) < 2147483647.0 ? std::trunc(stamp) : 0.0;
    std::array<std::uint8_t, 4> mask{};
    store(mask.data(), static_cast<std::int32_t>(whole));
    return mask;
}

Bytes Header::password() const
{
    const auto mask = stampMask();
    Bytes field(passwordLength);
    for (std::size_t i = 0; i < field.size(); ++i)
        field[i] = static_cast<std::uint8_t>(m_plain[passwordStart + i] ^ mask[i % 4]);
    std::size_t length = 0;
    while (length < field.size() && load16(field.data() + length) != 0)
        length += 2;
    field.resize(length);
    return field;
}

void Header::setPassword(ByteView password)
{
    if (password.size() > passwordLength)
        throw Error(ErrorKind::TooLong, "A senha do banco de dados tem no máximo 20 caracteres.");
    const auto mask = stampMask();
    for (std::size_t i = 0; i < passwordLength; ++i) {
        const std::uint8_t plain = i < password.size() ? password[i] : std::uint8_t{0};
        m_plain[passwordStart + i] = static_cast<std::uint8_t>(plain ^ mask[i % 4]);
    }
}

std::uint32_t Header::pageKey() const
{
    return load32(m_plain.data() + pageKeyAt);
}

bool Header::generalOrder() const
{
    return load16(m_plain.data() + orderStart) == generalLanguage && m_plain[orderVersionAt] == 0;
}

std::uint32_t Header::accountKey() const
{
    std::array<std::uint8_t, 80> region{};
    std::copy_n(m_plain.begin() + passwordStart, region.size(), region.begin());
    const auto mask = stampMask();
    for (std::size_t i = 0; i < passwordLength; ++i)
        region[i] = static_cast<std::uint8_t>(region[i] ^ mask[i % 4]);
    std::uint32_t key = load32(m_plain.data() + stampStart);
    for (std::size_t i = 0; i < 40; ++i)
        key ^= static_cast<std::uint32_t>(region[2 * i]) << (i % 24);
    return key;
}

PageBytes Header::stored() const
{
    PageBytes page = m_plain;
    applyHeaderMask(page);
    return page;
}

Header Header::makeNew(double creationStamp)
{
    Header header;
    PageBytes& page = header.m_plain;
    store32(page.data(), fileMark);
    std::copy(formatName.begin(), formatName.end(), page.begin() + nameAt);
    store32(page.data() + generationAt, 1);
    store32(page.data() + freeMapAt, 0x00000100);
    store32(page.data() + releasedMapAt, 0x00000101);
    for (std::uint32_t i = 0; i < 4; ++i)
        store32(page.data() + catalogAt + 4 * i, 2 + i);
    store16(page.data() + codePageAt, westernCodePage);
    store32(page.data() + buildAt, usualBuild);
    store32(page.data() + orderStart, std::uint32_t{generalLanguage});
    storeDouble(page.data() + stampStart, creationStamp);
    constexpr std::array<std::uint8_t, 8> version = {0x54, 0x06, 0, 0, 0x34, 0x2E, 0x30, 0};
    std::copy(version.begin(), version.end(), page.begin() + versionAt);
    // Idle commit slots; zeros would make Access demand a repair.
    for (std::size_t i = 0; i < commitSlots; ++i)
        page[commitSlotsAt + 2 * i + 1] = 1;
    header.setPassword({});
    return header;
}

} // namespace accessfile
