// Trace: a late-bound call on the host's MDI form, with every error swallowed.
#include "korvex/core/Trace.h"

#include "korvex/core/SharedContext.h"
#include "korvex/runtime/LateBinding.h"

#include <exception>

namespace korvex {

void Trace(const QString& message, float value)
{
    QObject* form = SharedContext::ForThisThread().ParentMDIForm;
    if (!form)
        return;
    try {
        QList<Variant> args{Variant(message), Variant(value)};
        CallByName(form, QStringLiteral("TraceFromKorvex"), VbMethod, args);
    } catch (const std::exception&) {
        // A host without the method, or whose method fails, simply gets no trace.
    }
}

}  // namespace korvex
