// LGS: first-use initialisation from the environment, then the current language's lookup.
#include "korvex/localisation/LGS.h"

#include "korvex/runtime/Conversions.h"

#include <memory>

namespace korvex {

QString LGS(const QString& StringId, const QString& DefaultString, int Suffix, const QString& SubVar1,
            const QString& SubVar2)
{
    const std::shared_ptr<clsLanguage>& current = clsLanguage::Current();
    if (current->ActiveLanguage() != -1)
        return current->LGS(StringId, DefaultString, Suffix, SubVar1, SubVar2, langDefault);

    const QString file = qEnvironmentVariable("LanguageFile");
    if (file.isEmpty())
        return QStringLiteral("Run Application to initialise");
    QString number = qEnvironmentVariable("Language");
    if (number.isEmpty())
        number = QStringLiteral("0");
    // Loading traces duplicate keys to the host, which might replace the current instance
    // meanwhile: hold on to this one.
    const std::shared_ptr<clsLanguage> language = current;
    language->LanguageInitialise(CLng(Variant(number)), file);
    return language->LGS(StringId, DefaultString, Suffix, SubVar1, SubVar2, langDefault);
}

}  // namespace korvex
