// The CSV reader: line reading through a buffer, the quoting rules, and the error numbers the
// library's callers test for. All parsing works on the file's bytes; every separator, quote and
// apostrophe is one byte in the Windows code page, so the text is decoded field by field.
#include "korvex/data/clsCSVFile.h"

#include "korvex/runtime/Error.h"
#include "korvex/runtime/Windows1252.h"

#include <QList>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#ifdef Q_OS_UNIX
#include <sys/file.h>
#endif
#if defined(__SSE2__)
#include <emmintrin.h>
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

// Bit i set where byte i of the 64 bytes at `block` equals `byte`.
quint64 ByteMask(const char* block, char byte)
{
    quint64 mask = 0;
#if defined(__SSE2__)
    const __m128i wanted = _mm_set1_epi8(byte);
    for (int k = 0; k < 4; ++k) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * k));
        const auto bits = static_cast<quint32>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
        mask |= static_cast<quint64>(bits) << (16 * k);
    }
#else
    for (int k = 0; k < 64; ++k)
        mask |= static_cast<quint64>(block[k] == byte) << k;
#endif
    return mask;
}

// Bit i becomes the parity of bits 0 to i.
quint64 PrefixXor(quint64 bits)
{
    for (int shift = 1; shift < 64; shift *= 2)
        bits ^= bits << shift;
    return bits;
}

}  // namespace

clsCSVFile::clsCSVFile(QObject* parent) : QObject(parent) {}

clsCSVFile::~clsCSVFile()
{
    mFile.close();
}

void clsCSVFile::CheckOpen(const char* source) const
{
    if (!mHandleTaken)
        RaiseCSV(ErrClosed, source, QStringLiteral("Operation is not allowed when the object is closed."));
}

// A failed open leaves the handle taken but no file behind it; reading then fails the way a
// read on an unopened file number does.
void clsCSVFile::RequireFile(const char* source) const
{
    if (!mFile.isOpen())
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
    mHandleTaken = false;
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
    ReadLine();
    ++mAbsolutePosition;
    ParseLine();
}

void clsCSVFile::ResetReadBuffer()
{
    if (mBuffer.size() != ReadBufferSize)
        mBuffer.resize(ReadBufferSize);
    mBufferPos = 0;
    mBufferEnd = 0;
}

bool clsCSVFile::FillBuffer()
{
    const qint64 got = mFile.read(mBuffer.data(), mBuffer.size());
    if (got < 0)
        Raise(vbErrDeviceIO, QStringLiteral("clsCSVFile.MoveNext"));
    mBufferPos = 0;
    mBufferEnd = got;
    return got > 0;
}

bool clsCSVFile::FileExhausted()
{
    return mBufferPos == mBufferEnd && !FillBuffer();
}

// A line is every byte up to the next LF (or to the end of the file), with every CR in it
// dropped; the read position ends just behind that LF. Reading through a buffer gives the same
// lines as reading in blocks and seeking back, without a limit on the line length. A line that
// lies whole in the buffer with at most a CR at its end is not copied: the buffer is only
// refilled on the way to the next line.
void clsCSVFile::ReadLine()
{
    const char* chunk = mBuffer.constData();
    qsizetype lf = FindByte(chunk, mBufferPos, mBufferEnd, '\n');
    if (lf < mBufferEnd) {
        qsizetype end = lf;
        if (end > mBufferPos && chunk[end - 1] == '\r')
            --end;
        if (FindByte(chunk, mBufferPos, end, '\r') == end) {
            mLine = QByteArrayView(chunk + mBufferPos, end - mBufferPos);
            mBufferPos = lf + 1;
            return;
        }
    }

    mLineCopy.resize(0);
    while (mBufferPos < mBufferEnd || FillBuffer()) {
        lf = FindByte(chunk, mBufferPos, mBufferEnd, '\n');
        qsizetype from = mBufferPos;
        while (from < lf) {
            const qsizetype cr = FindByte(chunk, from, lf, '\r');
            mLineCopy.append(chunk + from, cr - from);
            from = cr + 1;
        }
        if (lf < mBufferEnd) {
            mBufferPos = lf + 1;
            break;
        }
        mBufferPos = mBufferEnd;
    }
    mLine = mLineCopy;
}

// Splits the current line at commas. A comma separates fields only when the field so far holds
// an even number of double quotes, so quoted commas stay in their field; a field with an odd
// count runs to the end of the line. A comma at the end of the line adds no field; an empty
// line has none.
void clsCSVFile::ParseLine()
{
    const char* text = mLine.data();
    const qsizetype length = mLine.size();
    mSpans.clear();
    // Quotes and commas come too irregularly for branch prediction, so the line is read 64
    // bytes at a time as bit masks: a comma is a separator when the quotes before it on the
    // line are even in number (the count since the field's start is then even too).
    qsizetype start = 0;
    quint64 carriedQuote = 0;  // all ones when the line so far holds an odd number of quotes
    for (qsizetype base = 0; base < length; base += 64) {
        const char* block = text + base;
        char padded[64];
        if (length - base < 64) {
            std::memset(padded, 0, sizeof padded);
            std::memcpy(padded, block, static_cast<std::size_t>(length - base));
            block = padded;
        }
        const quint64 insideQuotes = PrefixXor(ByteMask(block, '"')) ^ carriedQuote;
        carriedQuote = static_cast<quint64>(static_cast<qint64>(insideQuotes) >> 63);
        for (quint64 separators = ByteMask(block, ',') & ~insideQuotes; separators != 0; separators &= separators - 1) {
            const qsizetype comma = base + std::countr_zero(separators);
            mSpans.push_back({start, comma - start});
            start = comma + 1;
        }
    }
    if (start < length)
        mSpans.push_back({start, length - start});
    mParsedWithDoubledApostrophes = mDoubleApostrophes;

    // Field texts are made on demand; a new record invalidates those of the last one at once.
    ++mRecord;
    if (mFields.size() < mSpans.size()) {
        mFields.resize(mSpans.size());
        mFieldRecord.resize(mSpans.size(), 0);
    }
    // The width only grows; fields beyond this line's own read as "", so a shorter line
    // leaves no old values behind.
    const int count = static_cast<int>(mSpans.size());
    if (count - 1 > mHighestFieldIndex)
        mHighestFieldIndex = count - 1;
}

// The bytes of one field: a field that begins and ends with a double quote loses both, and
// each doubled quote inside becomes one; apostrophes are doubled when asked for. Most fields
// need none of it and are a view of the line; the others are built in `scratch`.
QByteArrayView clsCSVFile::FieldBytes(const FieldSpan& span, QByteArray& scratch) const
{
    QByteArrayView bytes = mLine.sliced(span.start, span.length);
    if (bytes.size() >= 2 && bytes.front() == '"' && bytes.back() == '"') {
        bytes = bytes.sliced(1, bytes.size() - 2);
        if (bytes.contains('"')) {
            scratch.resize(0);
            for (qsizetype i = 0; i < bytes.size(); ++i) {
                scratch.append(bytes[i]);
                if (bytes[i] == '"' && i + 1 < bytes.size() && bytes[i + 1] == '"')
                    ++i;
            }
            bytes = scratch;
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

const QString& clsCSVFile::MaterialisedField(int index) const
{
    static const QString blank;
    const auto i = static_cast<std::size_t>(index);
    if (i >= mSpans.size())
        return blank;
    if (mFieldRecord[i] != mRecord) {
        // Decoding into the field's old text reuses its storage when nobody else holds it.
        FromWindows1252(FieldBytes(mSpans[i], mScratch), mFields[i]);
        mFieldRecord[i] = mRecord;
    }
    return mFields[i];
}

const QString& clsCSVFile::FieldText(short Index) const
{
    CheckOpen("Fields");
    if (Index < 0 || Index > mHighestFieldIndex)
        RaiseCSV(ErrInvalidColumn, "Fields", QStringLiteral("Invalid column reference."));
    return MaterialisedField(Index);
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

bool clsCSVFile::EOFCSV() const
{
    CheckOpen("EOF");
    return mAtEnd;
}

int clsCSVFile::FieldsCount() const
{
    CheckOpen("Fields");
    return mHighestFieldIndex + 1;
}

// 'a','b','c': the fields of the line as they were parsed, whatever DoubleApostrophes did to
// them since.
QString clsCSVFile::FieldsValueList() const
{
    CheckOpen("FieldsValueList");
    QByteArray list;
    for (const FieldSpan& span : mSpans) {
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
    // Fields beyond the line's own are blank and stay so.
    for (std::size_t i = 0; i < mSpans.size(); ++i) {
        (void)MaterialisedField(static_cast<int>(i));
        QString& field = mFields[i];
        if (value)
            field.replace(QLatin1Char('\''), QStringLiteral("''"));
        else
            field.replace(QStringLiteral("''"), QStringLiteral("'"));
    }
}

}  // namespace korvex
