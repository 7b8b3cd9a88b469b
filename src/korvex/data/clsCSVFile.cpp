// The CSV reader: line reading through a buffer, the quoting rules, and the error numbers the
// library's callers test for. All parsing works on the file's bytes; every separator, quote and
// apostrophe is one byte in the Windows code page, so the text is decoded field by field. The
// buffer is searched a block of 64 bytes at a time for the only bytes that matter (quote,
// comma, CR, LF), so a record costs a few steps per field rather than a look at every byte.
#include "korvex/data/clsCSVFile.h"

#include "korvex/runtime/Error.h"
#include "korvex/runtime/Windows1252.h"

#include <QList>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#ifdef Q_OS_UNIX
#include <sys/file.h>
#endif
#if defined(__x86_64__)
#include <immintrin.h>
#define KORVEX_CSV_WIDE_SCAN 1
#endif

namespace korvex {
namespace {

constexpr qsizetype ReadBufferSize = 64 * 1024;
constexpr qsizetype CountBlockSize = 16384;

// The reader's error numbers, as offsets from ObjectErrorBase.
constexpr int ErrAlreadyOpen = 1;
constexpr int ErrClosed = 2;
constexpr int ErrInvalidColumn = 4;
constexpr int ErrPastEOF = 5;
constexpr int ErrCannotOpen = 6;

[[noreturn]] void RaiseCSV(int offset, const char* member, const QString& description)
{
    Raise(ObjectErrorBase + offset, QStringLiteral("clsCSVFile.") + QLatin1String(member), description);
}

[[noreturn]] void RaiseCannotOpen(const QString& reason)
{
    RaiseCSV(ErrCannotOpen, "OpenCSV", QStringLiteral("Unable to open CSV file:\r\n") + reason);
}

// Takes the advisory lock that stands in for the share modes of Windows: mode 0 ("locked for
// other users") takes it exclusively, mode 1 ("shared") takes it shared, so a shared reader
// and an exclusive one exclude each other as they do there. Only programs that lock the same
// way are kept out; the platform has no mandatory file locks.
bool LockForMode(QFile& file, int mode)
{
#ifdef Q_OS_UNIX
    return ::flock(file.handle(), (mode == 0 ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0;
#else
    Q_UNUSED(file);
    Q_UNUSED(mode);
    return true;
#endif
}

qsizetype FindByte(const char* text, qsizetype from, qsizetype end, char byte)
{
    const void* found = std::memchr(text + from, byte, static_cast<std::size_t>(end - from));
    return found ? static_cast<const char*>(found) - text : end;
}

// The four masks of the bytes that matter in one block.
struct BlockMasks {
    quint64 quotes = 0, commas = 0, crs = 0, lfs = 0;
};

// Bit i becomes the parity of bits 0 to i.
quint64 PrefixXor(quint64 bits)
{
    for (int shift = 1; shift < 64; shift *= 2)
        bits ^= bits << shift;
    return bits;
}

// The plain way: one byte at a time, or 16 with SSE2, which every x86-64 processor has.
BlockMasks PlainMasks(const char* block)
{
    BlockMasks m;
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi8('"'), comma = _mm_set1_epi8(','), cr = _mm_set1_epi8('\r'),
                  lf = _mm_set1_epi8('\n');
    for (int k = 0; k < 4; ++k) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * k));
        const auto bits = [&](__m128i wanted) {
            return static_cast<quint64>(static_cast<quint32>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)))) << (16 * k);
        };
        m.quotes |= bits(quote);
        m.commas |= bits(comma);
        m.crs |= bits(cr);
        m.lfs |= bits(lf);
    }
#else
    for (int k = 0; k < 64; ++k) {
        m.quotes |= static_cast<quint64>(block[k] == '"') << k;
        m.commas |= static_cast<quint64>(block[k] == ',') << k;
        m.crs |= static_cast<quint64>(block[k] == '\r') << k;
        m.lfs |= static_cast<quint64>(block[k] == '\n') << k;
    }
#endif
    return m;
}

#if defined(KORVEX_CSV_WIDE_SCAN)
// Processors with AVX2 compare 32 bytes at once, and with carry-less multiplication a
// multiplication by all ones gives the running parity in one step.
[[gnu::target("avx2"), gnu::always_inline]] inline quint64 WideMask(__m256i low, __m256i high, char byte)
{
    const __m256i wanted = _mm256_set1_epi8(byte);
    const auto lowBits = static_cast<quint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, wanted)));
    const auto highBits = static_cast<quint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, wanted)));
    return static_cast<quint64>(lowBits) | (static_cast<quint64>(highBits) << 32);
}

[[gnu::target("avx2"), gnu::always_inline]] inline BlockMasks WideMasks(const char* block)
{
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + 32));
    return {WideMask(low, high, '"'), WideMask(low, high, ','), WideMask(low, high, '\r'), WideMask(low, high, '\n')};
}

// With AVX-512 one comparison covers the whole block and gives its mask at once.
[[gnu::target("avx512bw"), gnu::always_inline]] inline BlockMasks WidestMasks(const char* block)
{
    const __m512i bytes = _mm512_loadu_si512(block);
    return {_mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('"')), _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(',')),
            _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\r')), _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\n'))};
}

[[gnu::target("pclmul"), gnu::always_inline]] inline quint64 WideParity(quint64 bits)
{
    const __m128i product = _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(bits)),
                                                 _mm_set1_epi8(static_cast<char>(0xFF)), 0);
    return static_cast<quint64>(_mm_cvtsi128_si64(product));
}
#endif

// The set bits of `bits`: by the processor's own instruction where the caller is compiled for
// it, else counted in the register, which beats the library call the compiler would make.
template <bool Popcnt>
[[gnu::always_inline]] inline int BitCount(quint64 bits)
{
    if constexpr (Popcnt) {
        return __builtin_popcountll(bits);
    } else {
        bits -= (bits >> 1) & 0x5555555555555555ULL;
        bits = (bits & 0x3333333333333333ULL) + ((bits >> 2) & 0x3333333333333333ULL);
        bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0FULL;
        return static_cast<int>((bits * 0x0101010101010101ULL) >> 56);
    }
}

// How many marks of one kind stand before position `at` in the buffer (counted from some fixed
// point: only differences mean anything).
template <bool Popcnt>
[[gnu::always_inline]] inline qsizetype CountBefore(const CsvBlockBits* blocks, qsizetype at, quint64 CsvBlockBits::*kind,
                                                    quint32 CsvBlockBits::*before)
{
    if (at == 0)
        return blocks->*before;
    const auto lastBefore = static_cast<std::size_t>(at - 1);  // positions are never negative
    const CsvBlockBits& block = blocks[lastBefore / 64];
    const int upTo = static_cast<int>(lastBefore % 64) + 1;
    const quint64 bits = upTo == 64 ? block.*kind : block.*kind & ((quint64{1} << upTo) - 1);
    return static_cast<qsizetype>(block.*before) + BitCount<Popcnt>(bits);
}

// The separating commas and the CRs from `start` up to `end`.
template <bool Popcnt>
[[gnu::always_inline]] inline std::pair<qsizetype, qsizetype> CountLine(const CsvBlockBits* blocks, qsizetype start,
                                                                        qsizetype end)
{
    using B = CsvBlockBits;
    return {CountBefore<Popcnt>(blocks, end, &B::commas, &B::commasBefore) -
                CountBefore<Popcnt>(blocks, start, &B::commas, &B::commasBefore),
            CountBefore<Popcnt>(blocks, end, &B::crs, &B::crsBefore) -
                CountBefore<Popcnt>(blocks, start, &B::crs, &B::crsBefore)};
}

std::pair<qsizetype, qsizetype> CountLinePlain(const CsvBlockBits* blocks, qsizetype start, qsizetype end)
{
    return CountLine<false>(blocks, start, end);
}


// Which of the searches the processor can run: 0 the plain one, 1 with AVX2, 2 with AVX-512.
int WideInstructions()
{
#if defined(KORVEX_CSV_WIDE_SCAN)
    static const int level = [] {
        if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("pclmul") ||
            !__builtin_cpu_supports("popcnt") || !__builtin_cpu_supports("bmi"))
            return 0;
        return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") ? 2 : 1;
    }();
    return level;
#else
    return 0;
#endif
}

// Whether the widest search may also pack a block's commas and a field's characters together in
// one step (VBMI2), which not every processor with AVX-512 can.
bool CanCompress()
{
#if defined(KORVEX_CSV_WIDE_SCAN)
    static const bool can = __builtin_cpu_supports("avx512vbmi2");
    return can;
#else
    return false;
#endif
}

// All ones when bit `i` of `bits` is set, else 0.
quint64 Broadcast(quint64 bits, int i)
{
    return quint64{0} - ((bits >> i) & 1);
}

// Where the first double quote among the `length` characters of `text` lies (`length` when
// none): eight at a time, reading on behind the text, where the caller keeps room for it.
qsizetype FirstQuote(const char16_t* text, qsizetype length)
{
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi16(u'"');
    for (; i < length; i += 8) {
        const __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        if (const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(chars, quote))))
            return std::min(length, i + std::countr_zero(found) / 2);
    }
    return length;
#else
    return std::find(text, text + length, u'"') - text;
#endif
}

// A field is quoted when it starts and ends with a quote of its own.
bool IsQuoted(QByteArrayView field)
{
    return field.size() >= 2 && field.front() == '"' && field.back() == '"';
}

// Room kept behind the buffer's bytes, so that a block of 64 bytes can always be loaded.
constexpr qsizetype Padding = 64;

}  // namespace

clsCSVFile::clsCSVFile(QObject* parent) : clsCSVFile(ReadBufferSize, parent) {}

clsCSVFile::clsCSVFile(qsizetype readSize, QObject* parent, int search)
    : QObject(parent),
      mReadSize(std::max<qsizetype>(readSize, 1)),
      mSearch(std::clamp(search, 0, WideInstructions())),
      mCompress(mSearch == 2 && CanCompress())
{
}

clsCSVFile::~clsCSVFile()
{
    mFile.close();
}

void clsCSVFile::CheckOpen(const char* source) const
{
    if (!mHandleTaken)
        RaiseClosed(source);
}

void clsCSVFile::RaiseClosed(const char* source)
{
    RaiseCSV(ErrClosed, source, QStringLiteral("Operation is not allowed when the object is closed."));
}

void clsCSVFile::RaiseFieldText(short Index) const
{
    CheckOpen("Fields");
    Q_UNUSED(Index);
    RaiseCSV(ErrInvalidColumn, "Fields", QStringLiteral("Invalid column reference."));
}

// A failed open leaves the handle taken but no file behind it; reading then fails the way a
// read on an unopened file number does.
void clsCSVFile::RequireFile(const char* source) const
{
    if (!mReadable)
        Raise(vbErrBadFileNameOrNumber, QStringLiteral("clsCSVFile.") + QLatin1String(source));
}

void clsCSVFile::OpenCSV(const QString& FileName, int Mode)
{
    if (mHandleTaken)
        RaiseCSV(ErrAlreadyOpen, "OpenCSV", QStringLiteral("Operation is not allowed when the object is open."));
    mHandleTaken = true;
    if (Mode == 0)
        mRecordCount = -1;
    if (Mode != 0 && Mode != 1)
        RaiseCannotOpen(StandardErrorDescription(vbErrBadFileNameOrNumber));

    mFile.setFileName(FileName);
    if (!mFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        RaiseCannotOpen(mFile.errorString());
    if (!LockForMode(mFile, Mode)) {
        mFile.close();
        RaiseCannotOpen(StandardErrorDescription(vbErrPermissionDenied));
    }
    mReadable = true;

    ResetReadBuffer();
    mHighestFieldIndex = -1;
    mAbsolutePosition = 0;
    if (mFile.size() == 0) {
        mAtEnd = true;
        mAbsolutePosition = -1;
        return;
    }
    MoveNext();
}

void clsCSVFile::CloseCSV()
{
    CheckOpen("CloseCSV");
    mFile.close();
    mReadable = false;
    mHandleTaken = false;
    ++mRecord;  // no field of the last record stays readable
    mViewsReady = 0;
    mAtEnd = false;
    mRecordCount = -1;
}

void clsCSVFile::MoveFirst()
{
    RequireFile("MoveFirst");
    mFile.seek(0);
    ResetReadBuffer();
    mAtEnd = false;
    mAbsolutePosition = 0;
    MoveNext();
}

void clsCSVFile::MoveNext()
{
    if (mAtEnd)
        RaiseCSV(ErrPastEOF, "MoveNext", QStringLiteral("Attempted to move past EOF."));
    RequireFile("MoveNext");
    if (FileExhausted()) {
        // The fields keep the last record.
        mAtEnd = true;
        mAbsolutePosition = -1;
        return;
    }
    ReadRecord();
    ++mAbsolutePosition;
}

void clsCSVFile::ResetReadBuffer()
{
    FindSpans();  // while the current record's marks are still there
    if (mBuffer.size() < mReadSize + Padding) {
        mBuffer = QByteArray(mReadSize + Padding, '\0');  // zeroed: blocks may look past the end
        mBlocks.assign(static_cast<std::size_t>(mBuffer.size() / 64 + 1), {});
    }
    mBufferPos = 0;
    mBufferEnd = 0;
    mScannedTo = 0;
    mQuoteParity = 0;
    mLineEndCount = 0;
    mNextLineEnd = 0;
    mListedTo = 0;
    mCommasAtLineStart = 0;
    mCrsAtLineStart = 0;
    mWideTo = 0;
    mCommasListedTo = 0;
    mBlocks.front() = {};  // the counts start from 0 again
}

// Keeps the unread bytes (the start of a line) and reads more behind them. The bytes before the
// line's block go, so that the others keep their place within their blocks of 64 and their
// marks stay good; only the new bytes are searched. False when the file had nothing more.
bool clsCSVFile::Refill()
{
    // The current record must outlive its bytes and marks: it is the one kept at the end.
    FindSpans();
    if (mLine.data() != mLineCopy.constData()) {
        mLineCopy = mLine.toByteArray();
        mLine = mLineCopy;
    }
    // Only read when every line end found is taken: the list starts again.
    Q_ASSERT(mNextLineEnd == mLineEndCount);
    mNextLineEnd = 0;
    mLineEndCount = 0;
    const qsizetype drop = mBufferPos & ~qsizetype{63};
    if (drop > 0) {
        // The counts go on from where the dropped bytes leave them, also into a first block
        // that no byte has reached yet.
        const auto commasBefore = static_cast<quint32>(
            CountBefore<false>(mBlocks.data(), drop, &CsvBlockBits::commas, &CsvBlockBits::commasBefore));
        const auto crsBefore =
            static_cast<quint32>(CountBefore<false>(mBlocks.data(), drop, &CsvBlockBits::crs, &CsvBlockBits::crsBefore));
        std::memmove(mBuffer.data(), mBuffer.constData() + drop, static_cast<std::size_t>(mBufferEnd - drop));
        const auto from = mBlocks.begin() + drop / 64;
        std::copy(from, from + (mBufferEnd - drop + 63) / 64, mBlocks.begin());
        mBlocks.front().commasBefore = commasBefore;
        mBlocks.front().crsBefore = crsBefore;
        mBufferPos -= drop;
        mBufferEnd -= drop;
        // The decoded characters and listed commas no longer stand beside their bytes.
        mWideTo = 0;
        mCommasListedTo = 0;
        mScannedTo -= drop;
        mListedTo -= drop;
    }
    // A line longer than the buffer: room for one more read behind it.
    if (mBuffer.size() - Padding - mBufferEnd < mReadSize) {
        mBuffer.resize(std::max(2 * (mBuffer.size() - Padding), mBufferEnd + mReadSize) + Padding, '\0');
        mBlocks.resize(static_cast<std::size_t>(mBuffer.size() / 64 + 1));
    }
    const qint64 got = mFile.read(mBuffer.data() + mBufferEnd, mReadSize);
    if (got < 0)
        Raise(vbErrDeviceIO, QStringLiteral("clsCSVFile.MoveNext"));
    mBufferEnd += got;
    FindMarks();
    return got > 0;
}

// Marks the separating commas, the CRs and the LFs of the blocks not searched whole yet. A
// comma separates when the quotes before it on its line are even in number (then the count
// since its field's start is even too), so the quotes' running parity is carried from block to
// block and starts again behind every LF. A block that the buffer holds only in part is
// searched again, from the same parity, when more bytes have come. Every way of searching
// shares this step; it says whether the block was whole. `inside` comes as the parity of the
// quotes from the block's first byte on.
template <bool Popcnt>
[[gnu::always_inline]] inline bool clsCSVFile::StoreBlock(ScanState& scan, qsizetype base, quint64 inBlock,
                                                           quint64 commas, quint64 crs, quint64 lfs, quint64 quotes,
                                                           quint64 inside)
{
    lfs &= inBlock;
    crs &= inBlock;
    // Behind each LF the count starts again: the bits above it lose the parity it had. The first
    // two LFs of a block are taken without a branch (a missing one counts as bit 63, above which
    // nothing lies), as lines of ordinary length bring one or two and a loop would guess wrong.
    quint64 rest = lfs;
    for (int k = 0; k < 2; ++k) {
        const int at = std::countr_zero(rest | (quint64{1} << 63));
        inside ^= Broadcast(inside, at) & ((~quint64{0} << at) << 1);
        rest &= rest - 1;
    }
    for (; rest != 0; rest &= rest - 1) {
        const int at = std::countr_zero(rest);
        inside ^= Broadcast(inside, at) & ((~quint64{0} << at) << 1);
    }
    // The parity carried in from the blocks before counts only up to the first LF. Taken in last,
    // it keeps each block's work from waiting for the block before.
    inside ^= scan.parity & (lfs ^ (lfs - 1));
    const auto b = static_cast<std::size_t>(base / 64);
    CsvBlockBits& block = scan.blocks[b];
    // The first block of the buffer keeps the counts it came with (0 at the start of the file;
    // a refill carries them to the front with the block).
    const quint32 commasBefore = b > 0 ? scan.blocks[b - 1].commasBefore +
                                             static_cast<quint32>(BitCount<Popcnt>(scan.blocks[b - 1].commas))
                                       : block.commasBefore;
    const quint32 crsBefore =
        b > 0 ? scan.blocks[b - 1].crsBefore + static_cast<quint32>(BitCount<Popcnt>(scan.blocks[b - 1].crs))
              : block.crsBefore;
    block = {commas & inBlock & ~inside, crs, lfs, quotes & inBlock, commasBefore, crsBefore};
    // The line ends, with the counts before each; a block searched again lists only the new ones.
    quint64 newLfs = lfs;
    if (scan.listedTo > base)
        newLfs &= scan.listedTo - base >= 64 ? 0 : ~quint64{0} << (scan.listedTo - base);
    if (newLfs != 0) {
        if (scan.lineEndCount + 64 > scan.lineEnds->size())
            scan.lineEnds->resize(2 * scan.lineEnds->size() + 64);
        CsvLineEnd* out = scan.lineEnds->data() + scan.lineEndCount;
        for (; newLfs != 0; newLfs &= newLfs - 1) {
            const int at = std::countr_zero(newLfs);
            const quint64 before = (quint64{1} << at) - 1;
            *out++ = {base + at, commasBefore + static_cast<quint32>(BitCount<Popcnt>(block.commas & before)),
                      crsBefore + static_cast<quint32>(BitCount<Popcnt>(crs & before))};
        }
        scan.lineEndCount = static_cast<std::size_t>(out - scan.lineEnds->data());
    }
    scan.listedTo = std::max(scan.listedTo, std::min(scan.end, base + 64));
    if (inBlock != ~quint64{0})
        return false;
    scan.parity = (lfs >> 63) ? 0 : Broadcast(inside, 63);
    scan.scannedTo = base + 64;
    return true;
}

inline quint64 clsCSVFile::InBlock(const ScanState& scan, qsizetype base)
{
    const qsizetype valid = scan.end - base;
    return valid >= 64 ? ~quint64{0} : (quint64{1} << valid) - 1;
}

void clsCSVFile::ScanBlocks(ScanState& scan)
{
    for (qsizetype base = scan.scannedTo; base < scan.end; base += 64) {
        const quint64 inBlock = InBlock(scan, base);
        const BlockMasks m = PlainMasks(scan.data + base);
        if (!StoreBlock<false>(scan, base, inBlock, m.commas, m.crs, m.lfs, m.quotes, PrefixXor(m.quotes & inBlock)))
            return;
    }
}

#if defined(KORVEX_CSV_WIDE_SCAN)
[[gnu::target("avx2,pclmul,popcnt")]] void clsCSVFile::ScanBlocksWide(ScanState& scan)
{
    for (qsizetype base = scan.scannedTo; base < scan.end; base += 64) {
        const quint64 inBlock = InBlock(scan, base);
        const BlockMasks m = WideMasks(scan.data + base);
        if (!StoreBlock<true>(scan, base, inBlock, m.commas, m.crs, m.lfs, m.quotes, WideParity(m.quotes & inBlock)))
            return;
    }
}

[[gnu::target("avx512bw,pclmul,popcnt")]] void clsCSVFile::ScanBlocksWidest(ScanState& scan)
{
    for (qsizetype base = scan.scannedTo; base < scan.end; base += 64) {
        const quint64 inBlock = InBlock(scan, base);
        const BlockMasks m = WidestMasks(scan.data + base);
        if (!StoreBlock<true>(scan, base, inBlock, m.commas, m.crs, m.lfs, m.quotes, WideParity(m.quotes & inBlock)))
            return;
    }
}
#endif

void clsCSVFile::FindMarks()
{
    ScanState scan{mBuffer.constData(), mBufferEnd, mBlocks.data(), mScannedTo, mQuoteParity,
                   &mLineEnds,          mLineEndCount, mListedTo};
    switch (mSearch) {
#if defined(KORVEX_CSV_WIDE_SCAN)
    case 2: ScanBlocksWidest(scan); break;
    case 1: ScanBlocksWide(scan); break;
#endif
    default: ScanBlocks(scan); break;
    }
    mScannedTo = scan.scannedTo;
    mQuoteParity = scan.parity;
    mLineEndCount = scan.lineEndCount;
    mListedTo = scan.listedTo;
}

bool clsCSVFile::FileExhausted()
{
    return mBufferPos == mBufferEnd && !Refill();
}

// Reads on while no LF is known behind the current line's start, until one comes or the file
// ends; the line's start moves with the bytes kept.
void clsCSVFile::ReadOnToLineEnd()
{
    while (mNextLineEnd == mLineEndCount && Refill()) {
    }
}

// Hands `visit` the marks that `select` picks from each block between `from` and `to`, as bits
// beside the block's first position.
template <class Select, class Visit>
void clsCSVFile::ForEachBlock(qsizetype from, qsizetype to, Select select, Visit visit) const
{
    if (from >= to)
        return;
    const auto first = static_cast<std::size_t>(from) / 64;
    const auto last = static_cast<std::size_t>(to - 1) / 64;
    for (std::size_t b = first; b <= last; ++b) {
        quint64 bits = select(mBlocks[b]);
        if (b == first)
            bits &= ~quint64{0} << (from & 63);
        if (b == last && (to & 63) != 0)
            bits &= (quint64{1} << (to & 63)) - 1;
        visit(static_cast<qsizetype>(b * 64), bits);
    }
}

inline void clsCSVFile::FinishRecord()
{
    mParsedWithDoubledApostrophes = mDoubleApostrophes;

    // Field texts are made on demand; a new record invalidates those of the last one at once.
    ++mRecord;
    mViewsReady = 0;
    if (mFields.size() < mSpanCount) {
        mFields.resize(mSpanCount);
        mFieldRecord.resize(mSpanCount, 0);
    }
    // The width only grows; fields beyond this line's own read as "", so a shorter line
    // leaves no old values behind.
    const int count = static_cast<int>(mSpanCount);
    if (count - 1 > mHighestFieldIndex)
        mHighestFieldIndex = count - 1;
}

// A line is every byte up to the next LF (or to the end of the file), with every CR in it
// dropped; the read position ends just behind that LF. Its fields are counted from the marks
// (the separating commas, and one more when the line does not end in one); where they lie is
// found only when one is asked for. A line with a CR anywhere but at its end is copied without
// its CRs; the others are views of the buffer, which is only refilled on the way to the next
// line.
void clsCSVFile::ReadRecord()
{
    if (mNextLineEnd == mLineEndCount)
        ReadOnToLineEnd();
    const qsizetype start = mBufferPos;
    qsizetype end = mBufferEnd;
    qsizetype commas = 0;
    qsizetype crs = 0;
    mCommasBeforeLine = mCommasAtLineStart;
    if (mNextLineEnd < mLineEndCount) {
        const CsvLineEnd& lineEnd = mLineEnds[mNextLineEnd++];
        end = lineEnd.lf;
        // Differences of counts that may have wrapped round: a line's own are small.
        commas = static_cast<quint32>(lineEnd.commas - mCommasAtLineStart);
        crs = static_cast<quint32>(lineEnd.crs - mCrsAtLineStart);
        mCommasAtLineStart = lineEnd.commas;
        mCrsAtLineStart = lineEnd.crs;
        mBufferPos = end + 1;
    } else {
        // The last line, without an LF.
        std::tie(commas, crs) = CountLinePlain(mBlocks.data(), start, end);
        // Counted on too: bytes another program appends become lines of their own.
        mCommasAtLineStart += static_cast<quint32>(commas);
        mCrsAtLineStart += static_cast<quint32>(crs);
        mBufferPos = end;
    }
    const char* data = mBuffer.constData();
    const qsizetype length = end - start - crs;
    // The line's last byte other than a CR; usually its CRs (if any) all stand at its end.
    qsizetype last = end - 1;
    while (last >= start && data[last] == '\r')
        --last;
    const bool crsAtEnd = last - start + 1 == length;
    const bool endsInSeparator =
        last >= start && data[last] == ',' && ((mBlocks[static_cast<std::size_t>(last / 64)].commas >> (last & 63)) & 1);
    mLineCommas = static_cast<quint32>(commas);
    mSpanCount = static_cast<std::size_t>(commas) + (length > 0 && !endsInSeparator ? 1 : 0);
    mSpansFound = false;
    mLineStart = start;
    mLineEnd = end;
    if (crsAtEnd) {
        mLine = QByteArrayView(data + start, length);
    } else {
        mLineCopy.resize(0);
        for (qsizetype from = start; from < end;) {
            const qsizetype cr = FindByte(data, from, end, '\r');
            mLineCopy.append(data + from, cr - from);
            from = cr + 1;
        }
        mLine = mLineCopy;
    }
    FinishRecord();
}

// Where the fields of the current line lie, from the marks of its bytes in the buffer. A comma
// counts in the line without its CRs: it moves back by the CRs before it.
void clsCSVFile::FindSpans() const
{
    if (mSpansFound)
        return;
    mSpansFound = true;
    if (mSpans.size() < mSpanCount)
        mSpans.resize(std::max(mSpanCount, 2 * mSpans.size()));
    FieldSpan* span = mSpans.data();
    qsizetype fieldStart = 0;
    qsizetype removed = 0;
    const qsizetype start = mLineStart;
    if (mLine.data() == mBuffer.constData() + start) {
        // The usual line: its CRs, if any, all stand behind its last field.
        ForEachBlock(start, start + mLine.size(), [](const CsvBlockBits& block) { return block.commas; },
                     [&](qsizetype base, quint64 bits) {
                         for (; bits != 0; bits &= bits - 1) {
                             const qsizetype comma = base + std::countr_zero(bits) - start;
                             *span++ = {fieldStart, comma - fieldStart};
                             fieldStart = comma + 1;
                         }
                     });
        if (fieldStart < mLine.size())
            *span++ = {fieldStart, mLine.size() - fieldStart};
        Q_ASSERT(static_cast<std::size_t>(span - mSpans.data()) == mSpanCount);
        return;
    }
    ForEachBlock(start, mLineEnd, [](const CsvBlockBits& block) { return block.commas | block.crs; },
                 [&](qsizetype base, quint64 bits) {
                     const quint64 crBits = mBlocks[static_cast<std::size_t>(base / 64)].crs;
                     for (; bits != 0; bits &= bits - 1) {
                         const int i = std::countr_zero(bits);
                         if ((crBits >> i) & 1) {
                             ++removed;
                             continue;
                         }
                         const qsizetype comma = base + i - start - removed;
                         *span++ = {fieldStart, comma - fieldStart};
                         fieldStart = comma + 1;
                     }
                 });
    if (fieldStart < mLine.size())
        *span++ = {fieldStart, mLine.size() - fieldStart};
    Q_ASSERT(static_cast<std::size_t>(span - mSpans.data()) == mSpanCount);
}

// The bytes of one field: a field that begins and ends with a double quote loses both, and
// each doubled quote inside becomes one; apostrophes are doubled when asked for. Most fields
// need none of it and are a view of the line; the others are built in `scratch`.
QByteArrayView clsCSVFile::FieldBytes(const FieldSpan& span, QByteArray& scratch) const
{
    QByteArrayView bytes = mLine.sliced(span.start, span.length);
    if (IsQuoted(bytes)) {
        bytes = bytes.sliced(1, bytes.size() - 2);
        if (bytes.contains('"')) {
            // Copied in pieces between quotes; a doubled quote leaves one behind.
            scratch.resize(bytes.size());
            char* out = scratch.data();
            for (qsizetype i = 0; i < bytes.size();) {
                const qsizetype quote = FindByte(bytes.data(), i, bytes.size(), '"');
                const qsizetype piece = std::min(quote + 1, bytes.size()) - i;
                std::memcpy(out, bytes.data() + i, static_cast<std::size_t>(piece));
                out += piece;
                i += piece;
                if (quote < bytes.size() && i < bytes.size() && bytes[i] == '"')
                    ++i;
            }
            bytes = QByteArrayView(scratch.constData(), out - scratch.constData());
        }
    }
    if (mParsedWithDoubledApostrophes && bytes.contains('\'')) {
        QByteArray doubled;
        doubled.reserve(bytes.size() + 8);
        for (char c : bytes) {
            doubled.append(c);
            if (c == '\'')
                doubled.append(c);
        }
        scratch = std::move(doubled);
        bytes = scratch;
    }
    return bytes;
}

namespace {

// Drops the quote doubling each doubled quote among the `length` characters of `text`, from
// the first quote inside at `from` on (`length` when none), and gives the length left.
qsizetype DropDoubledQuotes(char16_t* text, qsizetype length, qsizetype from)
{
    qsizetype out = from;
    for (qsizetype in = from; in < length; ++in) {
        const char16_t c = text[in];
        text[out++] = c;
        in += c == u'"' && in + 1 < length && text[in + 1] == u'"' ? 1 : 0;
    }
    return out;
}

}  // namespace

// One field of the decoded line in place: a quoted field loses its quotes and keeps one of each
// doubled quote inside (it only shrinks); one whose apostrophes are to be doubled is written at
// `behind`, which moves on past it.
inline QStringView clsCSVFile::PlaceField(char16_t* line, qsizetype start, qsizetype length, char16_t*& behind) const
{
    char16_t* text = line + start;
    const char* bytes = mLine.data() + start;
    // Asked of the bytes, which were read long ago, rather than of the characters just written.
    if (IsQuoted(QByteArrayView(bytes, length))) {
        ++text;
        length -= 2;
        // Nothing moves before the first quote inside, and most quoted fields have none.
        length = DropDoubledQuotes(text, length, FirstQuote(text, length));
    }
    if (mParsedWithDoubledApostrophes && std::find(text, text + length, u'\'') != text + length) {
        char16_t* doubled = behind;
        for (qsizetype k = 0; k < length; ++k) {
            *behind++ = text[k];
            if (text[k] == u'\'')
                *behind++ = u'\'';
        }
        text = doubled;
        length = behind - doubled;
    }
    return QStringView(text, length);
}

// Decodes the whole line at once and places every field in it.
void clsCSVFile::DecodeFields() const
{
    if (!mParsedWithDoubledApostrophes && mLine.data() == mBuffer.constData() + mLineStart) {
        DecodeMarkedLine();
        return;
    }
    const qsizetype n = mLine.size();
    // Eight characters of room stay behind the rest, for FirstQuote to look past a field's end.
    const std::size_t room = static_cast<std::size_t>((mParsedWithDoubledApostrophes ? 3 * n : n) + 8);
    if (mDecoded.size() < room)
        mDecoded.resize(room);
    char16_t* line = mDecoded.data();
    FromWindows1252(mLine, line);
    char16_t* behind = line + n;
    FindSpans();
    if (mViews.size() < mSpanCount)
        mViews.resize(mSpans.size());
    for (std::size_t i = 0; i < mSpanCount; ++i)
        mViews[i] = PlaceField(line, mSpans[i].start, mSpans[i].length, behind);
    mViewsRecord = mRecord;
    mViewsReady = mSpanCount;
}

namespace {

// The marks of one kind among the 64 bytes of the buffer from `at` on, as bits; the block behind
// the line's last one is always there, its bits masked off by the caller.
[[gnu::always_inline]] inline quint64 MarksFrom(const CsvBlockBits* blocks, qsizetype at, quint64 CsvBlockBits::*kind)
{
    const auto b = static_cast<std::size_t>(at / 64);
    const int shift = static_cast<int>(at & 63);
    const quint64 low = blocks[b].*kind >> shift;
    return shift == 0 ? low : low | (blocks[b + 1].*kind << (64 - shift));
}

// Bits 0 to n - 1, for n from 0 to 64.
[[gnu::always_inline]] inline quint64 LowBits(qsizetype n)
{
    return n >= 64 ? ~quint64{0} : (quint64{1} << n) - 1;
}

// Of the quotes inside a field, given as bits, the ones that double another. In each run of
// quotes the first is kept, the second dropped, and so on; the runs that start at an even place
// drop their quotes at odd places and the others the reverse.
[[gnu::always_inline]] inline quint64 DoublingQuotes(quint64 quotes)
{
    constexpr quint64 even = 0x5555555555555555ULL;
    const quint64 starts = quotes & ~(quotes << 1);
    // Adding a run's start to the quotes clears the run: the bits cleared are the runs themselves.
    const quint64 evenRuns = quotes & ~(quotes + (starts & even));
    const quint64 oddRuns = quotes & ~(quotes + (starts & ~even));
    return (evenRuns & ~even) | (oddRuns & even);
}

// DropDoubledQuotes for fewer than 64 characters whose quotes are known as bits: which to drop
// is known without reading the characters, so the loop waits on no read.
[[gnu::always_inline]] inline qsizetype DropMarkedQuotes(char16_t* text, qsizetype length, quint64 quotes)
{
    const quint64 dropped = DoublingQuotes(quotes);
    // Each character behind the first dropped one moves down; a dropped one is overwritten next.
    qsizetype out = std::min<qsizetype>(std::countr_zero(dropped), length);
    for (qsizetype in = out + 1; in < length; ++in) {
        text[out] = text[in];
        out += 1 - static_cast<qsizetype>((dropped >> in) & 1);
    }
    return out;
}

#if defined(KORVEX_CSV_WIDE_SCAN)
// The same for up to 32 characters all at once, for processors with VBMI2.
[[gnu::target("avx512bw,avx512vl,avx512vbmi2,bmi,popcnt")]] qsizetype DropMarkedQuotesCompressed(char16_t* text,
                                                                                            qsizetype length,
                                                                                            quint64 quotes)
{
    if (length > 32)
        return DropMarkedQuotes(text, length, quotes);
    const auto all = static_cast<__mmask32>(LowBits(length));
    const auto keep = static_cast<__mmask32>(~DoublingQuotes(quotes)) & all;
    const __m512i kept = _mm512_maskz_compress_epi16(keep, _mm512_maskz_loadu_epi16(all, text));
    const int count = std::popcount(keep);
    _mm512_mask_storeu_epi16(text, static_cast<__mmask32>(LowBits(count)), kept);
    return count;
}
#endif

// Lists the places of the separating commas from `from` to `to` at `out`, which has room for
// eight more. A block's are written in groups of eight, whatever it holds, so that neither this
// nor the loop over the fields waits on a guess about where they run out.
template <bool Popcnt>
[[gnu::always_inline]] inline void ListCommas(const CsvBlockBits* blocks, qsizetype from, qsizetype to, qsizetype* out)
{
    for (qsizetype b = from / 64; b <= (to - 1) / 64; ++b) {
        quint64 bits = blocks[b].commas;
        if (b == from / 64)
            bits &= ~quint64{0} << (from & 63);
        const int count = BitCount<Popcnt>(bits);
        qsizetype* at = out;
        do {
            for (int k = 0; k < 8; ++k) {
                at[k] = b * 64 + std::countr_zero(bits);
                bits &= bits - 1;
            }
            at += 8;
        } while (bits != 0);
        out += count;
    }
}

#if defined(KORVEX_CSV_WIDE_SCAN)
// The same with a block's places packed together in one step, for processors with VBMI2.
[[gnu::target("avx512f,avx512bw,avx512vbmi2,popcnt")]] void ListCommasCompressed(const CsvBlockBits* blocks,
                                                                              qsizetype from, qsizetype to,
                                                                              qsizetype* out)
{
    alignas(64) static constexpr std::array<unsigned char, 64> Offsets = [] {
        std::array<unsigned char, 64> offsets{};
        for (int i = 0; i < 64; ++i)
            offsets[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
        return offsets;
    }();
    const __m512i offsets = _mm512_load_si512(Offsets.data());
    alignas(64) unsigned char packed[64];
    for (qsizetype b = from / 64; b <= (to - 1) / 64; ++b) {
        quint64 bits = blocks[b].commas;
        if (b == from / 64)
            bits &= ~quint64{0} << (from & 63);
        // The offsets of the block's commas side by side, then widened to places eight at a time.
        _mm512_store_si512(packed, _mm512_maskz_compress_epi8(bits, offsets));
        const __m512i base = _mm512_set1_epi64(b * 64);
        const int count = std::popcount(bits);
        for (int k = 0; k < count; k += 8) {
            const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(packed + k));
            _mm512_storeu_si512(out + k, _mm512_add_epi64(_mm512_maskz_cvtepu8_epi64(0xFF, eight), base));
        }
        out += count;
    }
}
#endif

}  // namespace

// The usual line, still in the buffer with its marks: its fields and the quotes inside them
// are found from the marks, so no character is looked at twice. (Doubled apostrophes take the
// longer way.)
template <int Search>
[[gnu::always_inline]] inline void clsCSVFile::DecodeMarkedLineAt() const
{
    const qsizetype start = mLineStart;
    const qsizetype n = mLine.size();
    // The bytes are decoded from the line on to the end of the buffer in one go, so that the
    // lines behind it are ready when they come; the buffer's padding leaves room for FirstQuote
    // to look past a field's end.
    if (start < mWideFrom || start + n > mWideTo) {
        if (mWide.size() < static_cast<std::size_t>(mBuffer.size()))
            mWide.resize(static_cast<std::size_t>(mBuffer.size()));
        FromWindows1252(QByteArrayView(mBuffer.constData() + start, mBufferEnd - start), mWide.data() + start);
        mWideTo = mBufferEnd;
    }
    // The line's quoted fields are unquoted in place: decoding it again must start afresh.
    mWideFrom = start + n;
    // The separating commas from the line on are listed in one go too.
    if (start < mCommasListedFrom || start + n > mCommasListedTo) {
        std::size_t count = 0;
        ForEachBlock(start, mBufferEnd, [](const CsvBlockBits& block) { return block.commas; },
                     [&](qsizetype, quint64 bits) { count += static_cast<std::size_t>(std::popcount(bits)); });
        if (mCommaPlaces.size() < count + 8)
            mCommaPlaces.resize(count + 8);
#if defined(KORVEX_CSV_WIDE_SCAN)
        if (Search == 2 && mCompress)
            ListCommasCompressed(mBlocks.data(), start, mBufferEnd, mCommaPlaces.data());
        else
#endif
            ListCommas<Search != 0>(mBlocks.data(), start, mBufferEnd, mCommaPlaces.data());
        mCommasListedFrom = start;
        mCommasListedTo = mBufferEnd;
        mCommasBeforeList = mCommasBeforeLine;
    }
    // The line's commas, by their count in the file; a line without any may have none listed.
    const qsizetype* const places = mCommaPlaces.data();
    const std::size_t firstComma = static_cast<quint32>(mCommasBeforeLine - mCommasBeforeList);
    const std::size_t lineCommas = mLineCommas;
    [[maybe_unused]] const bool compress = Search == 2 && mCompress;
    // Places are the buffer's: the characters stand where their bytes do.
    char16_t* const wide = mWide.data();
    const char* const bytes = mBuffer.constData();
    if (mViews.size() < mSpanCount)
        mViews.resize(std::max(mSpanCount, 2 * mViews.size()));
    QStringView* view = mViews.data();
    qsizetype fieldStart = start;
    const auto placeField = [&](qsizetype fieldEnd) {
        char16_t* text = wide + fieldStart;
        qsizetype length = fieldEnd - fieldStart;
        if (IsQuoted(QByteArrayView(bytes + fieldStart, length))) {
            ++text;
            length -= 2;
            if (length >= 64) {
                length = DropDoubledQuotes(text, length, FirstQuote(text, length));
            } else if (const quint64 quotes =
                           MarksFrom(mBlocks.data(), fieldStart + 1, &CsvBlockBits::quotes) & LowBits(length)) {
#if defined(KORVEX_CSV_WIDE_SCAN)
                if (compress)
                    length = DropMarkedQuotesCompressed(text, length, quotes);
                else
#endif
                    length = DropMarkedQuotes(text, length, quotes);
            }
        }
        *view++ = QStringView(text, length);
        fieldStart = fieldEnd + 1;
    };
    for (std::size_t k = 0; k < lineCommas; ++k)
        placeField(places[firstComma + k]);
    if (fieldStart < start + n)
        placeField(start + n);
    Q_ASSERT(static_cast<std::size_t>(view - mViews.data()) == mSpanCount);
    mViewsRecord = mRecord;
    mViewsReady = mSpanCount;
}

void clsCSVFile::DecodeMarkedLine() const
{
    switch (mSearch) {
#if defined(KORVEX_CSV_WIDE_SCAN)
    case 2: DecodeMarkedLineWidest(); break;
    case 1: DecodeMarkedLineWide(); break;
#endif
    default: DecodeMarkedLinePlain(); break;
    }
}

void clsCSVFile::DecodeMarkedLinePlain() const
{
    DecodeMarkedLineAt<0>();
}

#if defined(KORVEX_CSV_WIDE_SCAN)
[[gnu::target("avx2,bmi,popcnt")]] void clsCSVFile::DecodeMarkedLineWide() const
{
    DecodeMarkedLineAt<1>();
}

[[gnu::target("avx512bw,avx512vl,bmi,popcnt")]] void clsCSVFile::DecodeMarkedLineWidest() const
{
    DecodeMarkedLineAt<2>();
}
#endif

const QString& clsCSVFile::MaterialisedField(int index) const
{
    static const QString blank;
    const auto i = static_cast<std::size_t>(index);
    if (i >= mSpanCount)
        return blank;
    if (mFieldRecord[i] != mRecord) {
        // Copied into the field's old text, which keeps its storage when nobody else holds it.
        const QStringView view = FieldView(static_cast<short>(index));
        QString& field = mFields[i];
        field.resize(view.size());
        std::copy(view.begin(), view.end(), field.begin());
        mFieldRecord[i] = mRecord;
    }
    return mFields[i];
}

Variant clsCSVFile::Fields(short Index) const
{
    CheckOpen("Fields");
    if (Index == -1) {
        QList<Variant> all;
        all.reserve(mHighestFieldIndex + 1);
        for (int i = 0; i <= mHighestFieldIndex; ++i)
            all.append(Variant(MaterialisedField(i)));
        return Variant::Array(std::move(all));
    }
    return Variant(FieldText(Index));
}

// 'a','b','c': the fields of the line as they were parsed, whatever DoubleApostrophes did to
// them since.
QString clsCSVFile::FieldsValueList() const
{
    CheckOpen("FieldsValueList");
    FindSpans();
    QByteArray list;
    for (std::size_t i = 0; i < mSpanCount; ++i) {
        const FieldSpan& span = mSpans[i];
        if (!list.isEmpty())
            list.append(',');
        QByteArray scratch;
        list.append('\'').append(FieldBytes(span, scratch)).append('\'');
    }
    return FromWindows1252(list);
}

int clsCSVFile::AbsolutePosition() const
{
    CheckOpen("AbsolutePosition");
    return mAbsolutePosition;
}

// Counts line feeds over the whole file, plus one for a last line without one, then puts the
// read position back where it was.
int clsCSVFile::RecordCount()
{
    CheckOpen("RecordCount");
    if (mRecordCount != -1)
        return mRecordCount;
    RequireFile("RecordCount");
    const qint64 resumeAt = mFile.pos();
    mFile.seek(0);
    QByteArray block(CountBlockSize, Qt::Uninitialized);
    qint64 count = 0;
    char last = '\n';
    qint64 got = 0;
    while ((got = mFile.read(block.data(), block.size())) > 0) {
        count += std::count(block.constData(), block.constData() + got, '\n');
        last = block[got - 1];
    }
    mFile.seek(resumeAt);
    if (got < 0)
        Raise(vbErrDeviceIO, QStringLiteral("clsCSVFile.RecordCount"));
    if (last != '\n')
        ++count;
    mRecordCount = static_cast<int>(std::min<qint64>(count, std::numeric_limits<int>::max()));
    return mRecordCount;
}

// Applies the change to the current record at once; setting the same value twice applies it
// twice. The value list keeps the record as it was read.
void clsCSVFile::SetDoubleApostrophes(bool value)
{
    mDoubleApostrophes = value;
    if (!mHandleTaken || mAtEnd)
        return;
    // Fields beyond the line's own are blank and stay so. The views show the changed texts.
    for (std::size_t i = 0; i < mSpanCount; ++i) {
        (void)MaterialisedField(static_cast<int>(i));
        QString& field = mFields[i];
        if (value)
            field.replace(QLatin1Char('\''), QStringLiteral("''"));
        else
            field.replace(QStringLiteral("''"), QStringLiteral("'"));
        mViews[i] = field;
    }
}

}  // namespace korvex
