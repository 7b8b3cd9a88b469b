// The texts of one column folded to lower case (FoldCase, code unit by code unit) and packed as
// bytes, one row after the other, so that a substring search runs over one block of memory at the
// speed of memchr instead of decoding a million short texts. Each folded code unit is written in
// UTF-8's form for its value (1 to 3 bytes, surrogates included): the bytes of two texts then
// compare in the order of CompareNoCase, and a byte match starts and ends on whole code units, so
// every answer equals the one the UTF-16 comparisons give.
#pragma once

#include <QStringView>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvex::ado {

using RowId = std::uint32_t;

// Appends the folded bytes of `text` to `out`.
void AppendFolded(QStringView text, std::string& out);
std::string Folded(QStringView text);

// Writes a code unit already folded in the byte form above; returns how many bytes (1 to 3).
inline int EncodeFolded(char16_t c, unsigned char* bytes) noexcept
{
    if (c < 0x80) {
        bytes[0] = static_cast<unsigned char>(c);
        return 1;
    }
    if (c < 0x800) {
        bytes[0] = static_cast<unsigned char>(0xC0 | (c >> 6));
        bytes[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 2;
    }
    bytes[0] = static_cast<unsigned char>(0xE0 | (c >> 12));
    bytes[1] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
    bytes[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    return 3;
}
// The same over folded bytes, read from the front or from the back (for an index of endings).
std::uint64_t HeadKey(std::string_view bytes) noexcept;
std::uint64_t TailKey(std::string_view bytes) noexcept;
// Compares two byte strings from their last byte backwards: <0, 0 or >0.
int CompareReversed(std::string_view a, std::string_view b) noexcept;

// The first place of `needle` in `text` from `from` on, or npos.
std::size_t FindBytes(std::string_view text, std::string_view needle, std::size_t from = 0) noexcept;

// A Like pattern with wildcards anywhere, folded: the pieces between wildcards must appear in
// order, the first one at the start unless a wildcard leads, the last one at the end unless a
// wildcard trails.
struct FoldedPattern {
    std::vector<std::string> pieces;
    bool lead = false;
    bool trail = false;

    bool Matches(std::string_view text) const noexcept;
    // The longest piece: every matching text contains it.
    const std::string& Longest() const noexcept;
};

class FoldedText {
public:
    // Never part of a folded text (no UTF-8 byte is 0xFF): the old place of a changed row is
    // filled with it, so that no search finds the row there.
    static constexpr char Blank = '\xFF';

    template <class TextOf>
    void Build(RowId rows, TextOf textOf)
    {
        std::size_t bytes = 0;
        for (RowId row = 0; row < rows; ++row)
            bytes += FoldedSize(textOf(row));
        mBytes.clear();
        mBytes.reserve(bytes);
        mStart.clear();
        mStart.reserve(std::size_t{rows} + 1);
        mStart.assign(1, 0);
        for (RowId row = 0; row < rows; ++row)
            Append(textOf(row));
        mMoved.clear();
        mTail.clear();
    }

    void Append(QStringView text);
    void Set(RowId row, QStringView text);

    std::string_view View(RowId row) const noexcept
    {
        if (!mMoved.empty()) {
            if (auto it = mMoved.find(row); it != mMoved.end())
                return std::string_view(mTail).substr(it->second.start, it->second.length);
        }
        return std::string_view(mBytes).substr(mStart[row], mStart[row + 1] - mStart[row]);
    }
    // Rows whose folded text contains `needle` (not empty), ascending.
    std::vector<RowId> Containing(std::string_view needle) const;

    std::size_t BytesAllocated() const noexcept;

private:
    struct Slot {
        std::uint32_t start;
        std::uint32_t length;
    };
    static std::size_t FoldedSize(QStringView text) noexcept;
    void Compact();

    std::string mBytes;                 // rows in order, back to back
    std::vector<std::uint32_t> mStart;  // where each row starts; one more entry for the end
    // Rows changed since the last compaction: their place in mBytes is filled with Blank and
    // their text lives in mTail.
    std::unordered_map<RowId, Slot> mMoved;
    std::string mTail;
};

}  // namespace korvex::ado
