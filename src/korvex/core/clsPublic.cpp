// clsPublic: instances and the shared-context slots they fill.
#include "korvex/core/clsPublic.h"

#include "korvex/core/SharedContext.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/runtime/Error.h"

namespace korvex {

std::shared_ptr<clsPublic> clsPublic::Create()
{
    struct Instance : clsPublic {};
    auto instance = std::make_shared<Instance>();
    SharedContext::ForThisThread().CurrentPublic = instance;
    return instance;
}

clsPublic& clsPublic::Global()
{
    thread_local std::shared_ptr<clsPublic> implicit = Create();
    return *implicit;
}

std::shared_ptr<clsPublic> clsPublic::Current()
{
    return SharedContext::ForThisThread().CurrentPublic;
}

void clsPublic::InitZqControls(QObject* objZqUser, QObject* objParentScreen, QObject* objParentMDIForm)
{
    // Every argument is checked before any slot changes.
    if ((objZqUser && !qobject_cast<clsZqUser*>(objZqUser)) || (objParentScreen && !qobject_cast<Screen*>(objParentScreen)) ||
        (objParentMDIForm && !qobject_cast<MDIForm*>(objParentMDIForm)))
        Raise(vbErrTypeMismatch, QStringLiteral("clsPublic.InitZqControls"));
    SharedContext& context = SharedContext::ForThisThread();
    if (objZqUser)
        context.User = objZqUser;
    if (objParentScreen)
        context.ParentScreen = objParentScreen;
    if (objParentMDIForm)
        context.ParentMDIForm = objParentMDIForm;
}

void clsPublic::UninitVyrInvControls()
{
    SharedContext& context = SharedContext::ForThisThread();
    context.User = nullptr;
    context.ParentScreen = nullptr;
    context.ParentMDIForm = nullptr;
}

}  // namespace korvex
