// Chunk allocation for the text arena.
#include "korvex/platform/ado/TextArena.h"

#include <algorithm>

namespace korvex::ado {

TextArena::Ref TextArena::Add(QStringView text)
{
    const auto length = static_cast<std::uint32_t>(text.size());
    if (mChunks.empty() || length > mFree) {
        // A text longer than a chunk gets a chunk of its own size.
        const std::uint32_t next = mChunks.empty() ? FirstChunkChars : std::min(2 * mLastChunkChars, MaxChunkChars);
        const std::uint32_t size = std::max(length, next);
        mLastChunkChars = next;
        mChunks.push_back(std::make_unique_for_overwrite<char16_t[]>(size));
        mBytes += std::size_t{size} * sizeof(char16_t);
        mUsed = 0;
        mFree = size;
    }
    const auto chunk = static_cast<std::uint64_t>(mChunks.size() - 1);
    std::uint64_t stored = length;
    if (length >= LengthMask) {
        stored = LengthMask;
        mLongSizes[static_cast<std::uint32_t>(chunk)] = length;
    }
    const Ref ref{(chunk << (LengthBits + OffsetBits)) | (std::uint64_t{mUsed} << LengthBits) | stored};
    std::copy_n(text.utf16(), length, mChunks.back().get() + mUsed);
    mUsed += length;
    mFree -= length;
    return ref;
}

}  // namespace korvex::ado
