// UTF-16 text packed into large chunks, so that a million short texts cost their characters plus
// eight bytes each instead of a heap block each. Texts are never moved or freed one by one: a
// changed value is appended and the old characters stay until the arena goes.
#pragma once

#include <QStringView>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace korvex::ado {

class TextArena {
public:
    // Chunk, offset and length packed in 64 bits. A text too long for the length field has a
    // chunk of its own, whose size is its length.
    struct Ref {
        std::uint64_t bits = 0;
    };

    Ref Add(QStringView text);
    QStringView View(Ref ref) const noexcept
    {
        const auto length = static_cast<std::uint32_t>(ref.bits & LengthMask);
        if (length == 0)
            return {};
        const auto chunk = static_cast<std::uint32_t>(ref.bits >> (LengthBits + OffsetBits));
        const auto offset = static_cast<std::uint32_t>((ref.bits >> LengthBits) & OffsetMask);
        const std::uint32_t size = length == LengthMask ? mLongSizes.at(chunk) : length;
        return QStringView(mChunks[chunk].get() + offset, static_cast<qsizetype>(size));
    }
    std::size_t BytesAllocated() const noexcept { return mBytes; }

private:
    // Chunks start small, so that a ten-row list stays small, and double up to a cap, so that the
    // unused tail of the last chunk stays a small share of a big store.
    static constexpr std::uint32_t FirstChunkChars = 1u << 8;
    static constexpr std::uint32_t MaxChunkChars = 1u << 18;
    static constexpr int LengthBits = 26;
    static constexpr int OffsetBits = 18;  // enough for a place in the largest shared chunk
    static constexpr std::uint64_t LengthMask = (std::uint64_t{1} << LengthBits) - 1;
    static constexpr std::uint64_t OffsetMask = (std::uint64_t{1} << OffsetBits) - 1;

    std::vector<std::unique_ptr<char16_t[]>> mChunks;
    std::unordered_map<std::uint32_t, std::uint32_t> mLongSizes;  // chunk to length, long texts only
    std::uint32_t mUsed = 0;  // characters used in the last chunk
    std::uint32_t mFree = 0;  // characters still free in it
    std::uint32_t mLastChunkChars = 0;
    std::size_t mBytes = 0;
};

}  // namespace korvex::ado
