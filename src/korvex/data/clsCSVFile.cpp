// The CSV reader: line reading through a buffer, the quoting rules, and the error numbers the
// library's callers test for. All parsing works on the file's bytes; every separator, quote and
// apostrophe is one byte in the Windows code page, so the text is decoded field by field.
#include "korvex/data/clsCSVFile.h"

#include "korvex/runtime/Error.h"
#include "korvex/runtime/Windows1252.h"

#include <QList>

#include <algorithm>
#include <cstring>
#include <limits>

#ifdef Q_OS_UNIX
#include <sys/file.h>
#endif

namespace korvex {
namespace {

constexpr qsizetype ReadBufferSize = 64 * 1024;
constexpr qsizetype CountBlockSize = 16384;

// Offsets from ObjectErrorBase and their fixed descriptions.
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

qsizetype CountQuotes(const char* text, qsizetype from, qsizetype end)
{
    return std::count(text + from, text + end, '"');
}

// Every occurrence of `from` replaced by `to` (left to right, without overlaps).
QByteArray ReplaceAll(QByteArrayView bytes, QByteArrayView from, QByteArrayView to)
{
    QByteArray out = bytes.toByteArray();
    out.replace(from, to);
    return out;
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
// lines as reading in blocks and seeking back, without a limit on the line length.
void clsCSVFile::ReadLine()
{
    mLine.resize(0);
    while (mBufferPos < mBufferEnd || FillBuffer()) {
        const char* chunk = mBuffer.constData();
        const qsizetype lf = FindByte(chunk, mBufferPos, mBufferEnd, '\n');
        qsizetype from = mBufferPos;
        while (from < lf) {
            const qsizetype cr = FindByte(chunk, from, lf, '\r');
            mLine.append(chunk + from, cr - from);
            from = cr + 1;
        }
        if (lf < mBufferEnd) {
            mBufferPos = lf + 1;
            return;
        }
        mBufferPos = mBufferEnd;
    }
}

// Splits the current line at commas. A comma counts as a separator only when the text of the
// field so far holds an even number of double quotes, so quoted commas stay in their field. A
// comma at the end of the line adds no field; an empty line has none.
void clsCSVFile::ParseLine()
{
    const char* text = mLine.constData();
    const qsizetype length = mLine.size();
    mSpans.clear();
    qsizetype p = 0;
    while (p < length) {
        qsizetype comma = FindByte(text, p, length, ',');
        qsizetype quotes = CountQuotes(text, p, comma);
        while (quotes % 2 == 1 && comma < length) {
            const qsizetype next = FindByte(text, comma + 1, length, ',');
            quotes += CountQuotes(text, comma + 1, next);
            comma = next;
        }
        mSpans.push_back({p, comma - p});
        p = comma + 1;
    }
    mParsedWithDoubledApostrophes = mDoubleApostrophes;

    const int count = static_cast<int>(mSpans.size());
    if (count - 1 > mHighestFieldIndex)
        mHighestFieldIndex = count - 1;
    const auto width = static_cast<std::size_t>(mHighestFieldIndex + 1);
    if (mFields.size() < width) {
        mFields.resize(width);
        mFieldReady.resize(width);
    }
    // Fields of this line are made on demand; the rest of the width is blank, so a shorter
    // line leaves no old values behind.
    for (std::size_t i = 0; i < width; ++i) {
        const bool fromLine = i < mSpans.size();
        mFieldReady[i] = !fromLine;
        if (!fromLine)
            mFields[i].clear();
    }
}

// The bytes of one field: a field that begins and ends with a double quote loses both, and
// each doubled quote inside becomes one; apostrophes are doubled when asked for.
QByteArray clsCSVFile::FieldBytes(const FieldSpan& span) const
{
    QByteArrayView bytes(mLine.constData() + span.start, span.length);
    QByteArray owned;
    if (bytes.size() >= 2 && bytes.front() == '"' && bytes.back() == '"') {
        bytes = bytes.sliced(1, bytes.size() - 2);
        if (bytes.contains("\"\"")) {
            owned = ReplaceAll(bytes, "\"\"", "\"");
            bytes = owned;
        }
    }
    if (mParsedWithDoubledApostrophes && bytes.contains('\''))
        return ReplaceAll(bytes, "'", "''");
    return owned.isNull() ? bytes.toByteArray() : owned;
}

const QString& clsCSVFile::MaterialisedField(int index) const
{
    const auto i = static_cast<std::size_t>(index);
    if (!mFieldReady[i]) {
        mFields[i] = FromWindows1252(FieldBytes(mSpans[i]));
        mFieldReady[i] = true;
    }
    return mFields[i];
}

QString clsCSVFile::FieldText(short Index) const
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
        list.append('\'').append(FieldBytes(span)).append('\'');
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
    for (int i = 0; i <= mHighestFieldIndex; ++i) {
        QString& field = mFields[static_cast<std::size_t>(i)];
        (void)MaterialisedField(i);
        if (value)
            field.replace(QLatin1Char('\''), QStringLiteral("''"));
        else
            field.replace(QStringLiteral("''"), QStringLiteral("'"));
    }
}

}  // namespace korvex
