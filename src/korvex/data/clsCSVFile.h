// clsCSVFile: a forward-reading record reader for comma-separated files in the Windows code
// page, with a cursor shaped like a recordset (MoveFirst, MoveNext, EOFCSV, Fields). The
// language table loads through it; it also gives each record as an SQL value list.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QObject>
#include <QString>

#include <vector>

namespace korvex {

// Where the bytes that matter lie in 64 bytes of the reader's buffer: bit i of a mask is set
// where byte i is a separating comma, a CR, an LF or a quote; beside them the number of separating
// commas and CRs in the blocks before, so that a line's are counted at once.
struct CsvBlockBits {
    quint64 commas = 0, crs = 0, lfs = 0, quotes = 0;
    quint32 commasBefore = 0, crsBefore = 0;
};

// One line end found by the search: where its LF lies, and how many separating commas and CRs
// stand before it (counted as CsvBlockBits counts them), so that moving to a line costs no
// search and no count of its own.
struct CsvLineEnd {
    qsizetype lf = 0;
    quint32 commas = 0, crs = 0;
};

class clsCSVFile : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool EOFCSV READ EOFCSV)
    Q_PROPERTY(int FieldsCount READ FieldsCount)
    Q_PROPERTY(QString FieldsValueList READ FieldsValueList)
    Q_PROPERTY(int RecordCount READ RecordCount)
    Q_PROPERTY(int AbsolutePosition READ AbsolutePosition)
    Q_PROPERTY(bool DoubleApostrophes READ DoubleApostrophes WRITE SetDoubleApostrophes)

public:
    explicit clsCSVFile(QObject* parent = nullptr);
    // For tests: reads of `bytes` at a time instead of the usual 64 KB, so that small files
    // cross many read boundaries; `search` picks the plainer searches (0 plain, 1 with AVX2, 2
    // with AVX-512; never more than the processor has), so that each is tried on one machine.
    clsCSVFile(qsizetype readSize, QObject* parent, int search = 2);
    ~clsCSVFile() override;

    // Mode 0 opens the file for this reader alone, mode 1 shares it; the first record becomes
    // current. Raises +1 when already open and +6 when the file cannot be opened (the reader
    // then counts as open until CloseCSV).
    Q_INVOKABLE void OpenCSV(const QString& FileName, int Mode = 0);
    Q_INVOKABLE void CloseCSV();
    Q_INVOKABLE void MoveFirst();
    Q_INVOKABLE void MoveNext();
    // Field `Index` of the current record as a string; -1 gives the array of all fields.
    Q_INVOKABLE korvex::Variant Fields(short Index) const;

    bool EOFCSV() const
    {
        if (!mHandleTaken)
            RaiseClosed("EOF");
        return mAtEnd;
    }
    int FieldsCount() const
    {
        if (!mHandleTaken)
            RaiseClosed("Fields");
        return mHighestFieldIndex + 1;
    }
    QString FieldsValueList() const;
    // Counts the lines of the whole file the first time it is asked after a mode 0 open.
    int RecordCount();
    int AbsolutePosition() const;
    bool DoubleApostrophes() const { return mDoubleApostrophes; }
    void SetDoubleApostrophes(bool value);

    // For the library: the highest field index as stored (FieldsCount - 1), and one field's
    // text without the Variant around it (raising as Fields does), valid until the reader
    // moves.
    int HighestFieldIndex() const { return mHighestFieldIndex; }
    // The same text as a view, for a reader that looks at many fields and keeps few: the whole
    // line is decoded from the code page when its first field is asked for, and no string is
    // made per field. Valid until the reader moves, closes or DoubleApostrophes is set.
    QStringView FieldView(short Index) const
    {
        // Views are only current while the reader is open and on their line: moving and closing
        // set mViewsReady to 0.
        if (static_cast<std::size_t>(Index) < mViewsReady) [[likely]]
            return mViews[static_cast<std::size_t>(Index)];
        if (!mHandleTaken || Index < 0 || Index > mHighestFieldIndex)
            RaiseFieldText(Index);
        if (mViewsRecord != mRecord)
            DecodeFields();
        const auto i = static_cast<std::size_t>(Index);
        return i < mSpanCount ? mViews[i] : QStringView();
    }
    const QString& FieldText(short Index) const
    {
        if (!mHandleTaken || Index < 0 || Index > mHighestFieldIndex)
            RaiseFieldText(Index);
        const auto i = static_cast<std::size_t>(Index);
        if (i < mSpanCount && mFieldRecord[i] == mRecord)
            return mFields[i];
        return MaterialisedField(Index);
    }

private:
    // Where a field lies in the current line; its text is made only when someone asks for it,
    // so walking records costs no string per field.
    struct FieldSpan {
        qsizetype start = 0;
        qsizetype length = 0;
    };

    void CheckOpen(const char* source) const;
    [[noreturn]] static void RaiseClosed(const char* source);
    [[noreturn]] void RaiseFieldText(short Index) const;
    void RequireFile(const char* source) const;
    bool Refill();
    void FindMarks();
    bool FileExhausted();
    void ReadOnToLineEnd();
    void ReadRecord();
    void FinishRecord();
    void FindSpans() const;
    QByteArrayView FieldBytes(const FieldSpan& span, QByteArray& scratch) const;
    void DecodeFields() const;
    QStringView PlaceField(char16_t* line, qsizetype start, qsizetype length, char16_t*& behind) const;
    // The usual line's decoding, compiled once for each search level so that each uses the
    // instructions its search may use.
    void DecodeMarkedLine() const;
    template <int Search>
    void DecodeMarkedLineAt() const;
    void DecodeMarkedLinePlain() const;
    void DecodeMarkedLineWide() const;
    void DecodeMarkedLineWidest() const;
    const QString& MaterialisedField(int index) const;
    void ResetReadBuffer();

    QFile mFile;
    // The file "handle": set from the moment OpenCSV starts until CloseCSV, also when the open
    // itself failed.
    bool mHandleTaken = false;
    bool mReadable = false;  // the file is open for reading

    // The bytes read and not yet taken: mBufferPos is where the next line starts. The buffer
    // keeps room behind its end so that the last block of 64 bytes can always be loaded whole,
    // and grows when one line does not fit.
    QByteArray mBuffer;
    qsizetype mReadSize;
    qsizetype mBufferPos = 0;
    qsizetype mBufferEnd = 0;
    // The marks, one entry for each 64 bytes of the buffer. Blocks before mScannedTo are searched whole; mQuoteParity (all ones inside quotes) is the
    // line's quote parity at mScannedTo.
    std::vector<CsvBlockBits> mBlocks;
    // The search through the buffer, in the plain way or with the wide instructions of the
    // processor when it has them.
    struct ScanState {
        const char* data;
        qsizetype end;
        CsvBlockBits* blocks;
        qsizetype scannedTo;
        quint64 parity;
        std::vector<CsvLineEnd>* lineEnds;
        std::size_t lineEndCount;
        qsizetype listedTo;  // LFs before this are listed already
    };
    static void ScanBlocks(ScanState& scan);
    static void ScanBlocksWide(ScanState& scan);
    static void ScanBlocksWidest(ScanState& scan);
    int mSearch;  // which of them: 0, 1 or 2
    bool mCompress;  // the widest search also packs commas and characters in one step
    static quint64 InBlock(const ScanState& scan, qsizetype base);
    template <bool Popcnt>
    static bool StoreBlock(ScanState& scan, qsizetype base, quint64 inBlock, quint64 commas, quint64 crs, quint64 lfs,
                           quint64 quotes, quint64 inside);
    template <class Select, class Visit>
    void ForEachBlock(qsizetype from, qsizetype to, Select select, Visit visit) const;
    qsizetype mScannedTo = 0;
    quint64 mQuoteParity = 0;
    // The line ends found and not yet read, from mNextLineEnd to mLineEndCount, and the counts
    // at the start of the line to be read next.
    std::vector<CsvLineEnd> mLineEnds;
    std::size_t mLineEndCount = 0;
    std::size_t mNextLineEnd = 0;
    qsizetype mListedTo = 0;
    quint32 mCommasAtLineStart = 0;
    quint32 mCrsAtLineStart = 0;
    // The current line's separating commas: how many come before it and how many it holds.
    quint32 mCommasBeforeLine = 0;
    quint32 mLineCommas = 0;

    // The current line without its CRs (a view of the read buffer or of mLineCopy), and the
    // fields found in it.
    QByteArrayView mLine;
    QByteArray mLineCopy;
    // The number of fields of the line, and where they lie: found from the marks only when a
    // field is asked for (or before the marks go with the next read).
    std::size_t mSpanCount = 0;
    mutable std::vector<FieldSpan> mSpans;
    mutable bool mSpansFound = true;
    qsizetype mLineStart = 0;  // the line's bytes in the buffer, CRs and all, while unfound
    qsizetype mLineEnd = 0;
    bool mParsedWithDoubledApostrophes = false;

    // Texts of the current line's fields, each made from its span on first use: it is current
    // when its entry in mFieldRecord equals mRecord, the number of lines parsed so far.
    mutable std::vector<QString> mFields;
    mutable std::vector<quint64> mFieldRecord;
    // A line with CRs inside or apostrophes to double, decoded, its quoted fields unquoted in
    // place, with room behind it for fields whose apostrophes are doubled.
    mutable std::vector<char16_t> mDecoded;
    // The usual line is decoded where it stands: mWide holds the characters of the buffer's bytes
    // from mWideFrom to mWideTo (the rest of the buffer, decoded when a line first needed it).
    mutable std::vector<char16_t> mWide;
    mutable qsizetype mWideFrom = 0;
    mutable qsizetype mWideTo = 0;
    // The fields as views of one or the other, current while mViewsRecord equals mRecord.
    mutable std::vector<QStringView> mViews;
    // The places of the separating commas of the buffer from mCommasListedFrom to
    // mCommasListedTo, the first being the one behind mCommasBeforeList others in the file.
    mutable std::vector<qsizetype> mCommaPlaces;
    mutable qsizetype mCommasListedFrom = 0;
    mutable qsizetype mCommasListedTo = 0;
    mutable quint32 mCommasBeforeList = 0;
    mutable quint64 mViewsRecord = 0;
    mutable std::size_t mViewsReady = 0;  // the views' count while they are current, else 0
    quint64 mRecord = 0;
    int mHighestFieldIndex = -1;

    int mAbsolutePosition = 0;
    bool mAtEnd = false;
    // 0 on a new reader, -1 once marked "not yet counted".
    int mRecordCount = 0;
    bool mDoubleApostrophes = false;
};

}  // namespace korvex
