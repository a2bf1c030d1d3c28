#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

// Bytes of the file: pages and little-endian numbers.
namespace accessfile {

inline constexpr std::size_t pageSize = 4096;
inline constexpr std::uint64_t largestFile = 0x7FFFF000;

using Bytes = std::vector<std::uint8_t>;
using PageNumber = std::uint32_t;
using PageBytes = std::array<std::uint8_t, pageSize>;
using PagePointer = std::shared_ptr<const PageBytes>;
using ByteView = std::span<const std::uint8_t>;

// Every page but page 0 begins alike:
//
//   offset size
//        0    1  its type
//        1    1  1
//        2    2  free bytes, as its type counts them
inline constexpr std::size_t pageMarkAt = 1;
inline constexpr std::uint8_t pageMark = 1;
inline constexpr std::size_t pageFreeAt = 2;

/// First byte of a page.
enum class PageType : std::uint8_t {
    None = 0x00,
    Data = 0x01,
    Definition = 0x02,
    IndexNode = 0x03,
    IndexLeaf = 0x04,
    Bitmap = 0x05,
    DroppedDefinition = 0x08,
    EmptiedData = 0x09
};

[[nodiscard]] inline bool isType(const PageBytes& page, PageType type)
{
    return page[0] == static_cast<std::uint8_t>(type);
}

inline void setType(PageBytes& page, PageType type)
{
    page[0] = static_cast<std::uint8_t>(type);
    page[pageMarkAt] = pageMark;
}

[[nodiscard]] inline std::uint16_t load16(const std::uint8_t* at)
{
    std::uint16_t value = 0;
    for (unsigned i = 0; i < 2; ++i)
        value = static_cast<std::uint16_t>(value | (at[i] << (8 * i)));
    return value;
}

[[nodiscard]] inline std::uint32_t load32(const std::uint8_t* at)
{
    return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
           static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

[[nodiscard]] inline std::uint64_t load64(const std::uint8_t* at)
{
    return static_cast<std::uint64_t>(load32(at)) | static_cast<std::uint64_t>(load32(at + 4)) << 32;
}

template <typename Integer>
void store(std::uint8_t* at, Integer value)
{
    using Unsigned = std::make_unsigned_t<Integer>;
    auto rest = static_cast<Unsigned>(value);
    for (std::size_t i = 0; i < sizeof(Integer); ++i) {
        at[i] = static_cast<std::uint8_t>(rest & 0xFF);
        rest = static_cast<Unsigned>(static_cast<std::uint64_t>(rest) >> 8);
    }
}

inline void store16(std::uint8_t* at, std::size_t value)
{
    store(at, static_cast<std::uint16_t>(value));
}

inline void store32(std::uint8_t* at, std::uint32_t value)
{
    store(at, value);
}

inline void store64(std::uint8_t* at, std::uint64_t value)
{
    store(at, value);
}

inline void append16(Bytes& to, std::size_t value)
{
    to.resize(to.size() + 2);
    store16(to.data() + to.size() - 2, value);
}

inline void append32(Bytes& to, std::uint32_t value)
{
    to.resize(to.size() + 4);
    store32(to.data() + to.size() - 4, value);
}

inline void append(Bytes& to, ByteView bytes)
{
    to.insert(to.end(), bytes.begin(), bytes.end());
}

[[nodiscard]] inline double loadDouble(const std::uint8_t* at)
{
    const std::uint64_t bits = load64(at);
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline void storeDouble(std::uint8_t* at, double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    store64(at, bits);
}

/// Raises Error (Damaged) for the structure that is named.
[[noreturn]] void throwDamaged(const std::string& what);

} // namespace accessfile
