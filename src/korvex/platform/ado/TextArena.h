// UTF-16 text packed into large chunks, so that a million short texts cost their characters plus
// twelve bytes each instead of a heap block each. Texts are never moved or freed one by one: a
// changed value is appended and the old characters stay until the arena goes.
#pragma once

#include <QStringView>

#include <cstdint>
#include <memory>
#include <vector>

namespace korvex::ado {

class TextArena {
public:
    struct Ref {
        std::uint32_t chunk = 0;
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
    };

    Ref Add(QStringView text);
    QStringView View(Ref ref) const noexcept
    {
        if (ref.length == 0)
            return {};
        return QStringView(mChunks[ref.chunk].get() + ref.offset, static_cast<qsizetype>(ref.length));
    }
    std::size_t BytesAllocated() const noexcept { return mBytes; }

private:
    // Chunks start small, so that a ten-row list stays small, and double up to a cap, so that the
    // unused tail of the last chunk stays a small share of a big store.
    static constexpr std::uint32_t FirstChunkChars = 1u << 8;
    static constexpr std::uint32_t MaxChunkChars = 1u << 18;

    std::vector<std::unique_ptr<char16_t[]>> mChunks;
    std::uint32_t mUsed = 0;  // characters used in the last chunk
    std::uint32_t mFree = 0;  // characters still free in it
    std::uint32_t mLastChunkChars = 0;
    std::size_t mBytes = 0;
};

}  // namespace korvex::ado
