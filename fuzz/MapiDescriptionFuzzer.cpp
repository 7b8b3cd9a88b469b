// The MAPI helper's description file reader from arbitrary bytes: it must never crash, never
// leave a line break inside a field, account for every line, and read back exactly what the
// writer wrote for any e-mail whose texts the format can carry.
#include "korvex/email/MapiDescription.h"
#include "korvex/runtime/Windows1252.h"

#include <QByteArray>

#include <cstdlib>

namespace {

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

bool HasBreak(const QString& text)
{
    return text.contains(QLatin1Char('\r')) || text.contains(QLatin1Char('\n'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace korvex;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    // The reader on raw bytes.
    const MapiDescription read = ParseMapiDescription(bytes);
    const qsizetype lines = bytes.count("\r\n") + (bytes.endsWith("\r\n") ? 0 : 1);
    Check(read.to.size() + read.messageLines.size() + read.unknownLines.size() <= lines);
    for (const QStringList* list : {&read.to, &read.messageLines})
        for (const QString& text : *list)
            Check(!text.contains(QStringLiteral("\r\n")));
    Check(!read.subject.contains(QStringLiteral("\r\n")) && !read.attachmentPath.contains(QStringLiteral("\r\n")));

    // The writer and the reader together: the input's pieces (split at NUL bytes) become an
    // e-mail in the texts the format can hold (no line breaks outside the message, no "<Name>"
    // in the attachment's name), which must come back unchanged.
    const QList<QByteArray> pieces = bytes.split('\0');
    auto piece = [&](int i) { return i < pieces.size() ? FromWindows1252(pieces[i]) : QString(); };
    const QString to = piece(0);
    const QString subject = piece(1);
    const QString message = piece(2);
    const QString path = piece(3);
    const QString name = piece(4);
    const bool autoSend = size % 2 == 1;
    if (HasBreak(to) || HasBreak(subject) || HasBreak(path) || HasBreak(name) || name.contains(QStringLiteral("<Name>"))
        || HasBreak(QString(message).remove(QStringLiteral("\r\n"))))
        return 0;
    const QStringList written = MapiDescriptionLines(to, subject, message, path, path.isEmpty() ? QString() : name, autoSend);
    const MapiDescription back = ParseMapiDescription(EncodeMapiDescription(written));
    Check(back.unknownLines.isEmpty());
    Check(back.to.join(QLatin1Char(';')) == to);
    Check(back.subject == subject);
    Check(back.messageLines.join(QStringLiteral("\r\n")) == message);
    Check(back.attachmentPath == path);
    Check(back.autoSend == autoSend);
    return 0;
}
