// The language-file loader from arbitrary file contents: a file may be refused with the CSV
// reader's errors, anything else must load, and lookups in whatever loaded must give a text
// without crashing, hanging or reading out of bounds.
#include "korvex/localisation/clsLanguage.h"
#include "korvex/runtime/Error.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

const QString& FilePath()
{
    static QTemporaryDir dir;
    static const QString path = dir.filePath(QStringLiteral("fuzz.lng"));
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace korvex;
    if (size == 0)
        return 0;
    // The first byte chooses the language (-2 to 6, so the odd ones are tried too).
    const int language = data[0] % 9 - 2;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));
    {
        QFile file(FilePath());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            std::abort();
    }

    static const std::shared_ptr<clsLanguage> lang = clsLanguage::Create();
    try {
        lang->LanguageInitialise(language, FilePath());
        if (lang->ActiveLanguage() != language)
            std::abort();
    } catch (const Error& error) {
        const int n = error.Number();
        if (n != ObjectErrorBase + 4 && n != ObjectErrorBase + 5 && n != vbErrTypeMismatch)
            std::abort();  // only a malformed file's errors may come out
    }

    // Look up every word of the file as a key, in every language column.
    for (const QByteArray& piece : bytes.split('\n').mid(0, 64)) {
        const QString key = QString::fromLatin1(piece.left(piece.indexOf(','))).trimmed();
        for (int code : {static_cast<int>(langDefault), 0, 1, 2, 3, 4}) {
            const QString text = lang->LGS(key, QStringLiteral("%1-%2"), code % 4, key, QStringLiteral("x"), code);
            (void)text;
        }
    }
    return 0;
}
