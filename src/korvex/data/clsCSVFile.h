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

    bool EOFCSV() const;
    int FieldsCount() const;
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
    const QString& FieldText(short Index) const;

private:
    // Where a field lies in the current line; its text is made only when someone asks for it,
    // so walking records costs no string per field.
    struct FieldSpan {
        qsizetype start = 0;
        qsizetype length = 0;
    };

    void CheckOpen(const char* source) const;
    void RequireFile(const char* source) const;
    bool FillBuffer();
    bool FileExhausted();
    void ReadLine();
    void ParseLine();
    QByteArrayView FieldBytes(const FieldSpan& span, QByteArray& scratch) const;
    const QString& MaterialisedField(int index) const;
    void ResetReadBuffer();

    QFile mFile;
    // The file "handle": set from the moment OpenCSV starts until CloseCSV, also when the open
    // itself failed.
    bool mHandleTaken = false;

    QByteArray mBuffer;
    qsizetype mBufferPos = 0;
    qsizetype mBufferEnd = 0;

    // The current line without its CRs (a view of the read buffer or of mLineCopy), and the
    // fields found in it.
    QByteArrayView mLine;
    QByteArray mLineCopy;
    std::vector<FieldSpan> mSpans;
    bool mParsedWithDoubledApostrophes = false;

    // Texts of the current line's fields, each made from its span on first use: it is current
    // when its entry in mFieldRecord equals mRecord, the number of lines parsed so far.
    mutable std::vector<QString> mFields;
    mutable std::vector<quint64> mFieldRecord;
    mutable QByteArray mScratch;
    quint64 mRecord = 0;
    int mHighestFieldIndex = -1;

    int mAbsolutePosition = 0;
    bool mAtEnd = false;
    // 0 on a new reader, -1 once marked "not yet counted".
    int mRecordCount = 0;
    bool mDoubleApostrophes = false;
};

}  // namespace korvex
