// The form-file loader from arbitrary bytes: any input may be refused with the loader's error,
// nothing else may happen, and a form that loads must save and load back to the same text.
#include "korvex/platform/host/FormFile.h"
#include "korvex/runtime/Error.h"

#include <QApplication>

#include <cstdlib>

// Fontconfig, under Qt's font database, drops parts of its pattern cache at exit; that is not
// the loader's leak.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    try {
        auto form = korvex::FormFile::FromJson(json, QStringLiteral("fuzz"), size % 2 == 0);
        const QByteArray saved = korvex::FormFile::ToJson(*form);
        auto again = korvex::FormFile::FromJson(saved, QStringLiteral("fuzz-saved"));
        if (korvex::FormFile::ToJson(*again) != saved)
            std::abort();  // what we write we must read back unchanged
    } catch (const korvex::Error&) {
    }
    return 0;
}
