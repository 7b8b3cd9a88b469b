// Form files: one JSON file a form, holding the form's properties and its controls, nested as
// placed, each with its type name, name, array index, extender properties and property bag.
// Loading goes through the control registry and each control's ReadProperties; saving through
// WriteProperties, so a value equal to its default is not stored and a saved file loads and
// saves back unchanged.
#pragma once

#include "korvex/platform/host/Form.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace korvex {

class Control;

// The error a form file that cannot be loaded raises; its description names the file, the
// control and the property.
inline constexpr int FormFileLoadError = 31037;

class FormFile {
public:
    // Builds the form described by the file, with its controls, not yet shown. In design mode
    // the controls see UserMode False while they load. Any fault raises FormFileLoadError and
    // leaves nothing behind.
    static std::unique_ptr<Form> Load(const QString& path, bool designMode = false);
    static std::unique_ptr<Form> FromJson(const QByteArray& json, const QString& sourceName, bool designMode = false);

    // Writes the form and its controls; raises 75 when the file cannot be written.
    static void Save(Form& form, const QString& path);
    static QByteArray ToJson(Form& form);

    // Places a new control on the form under design: created, named, given InitProperties.
    static Control* AddNewControl(Form& form, const QString& typeName, const QString& name, QWidget* container = nullptr);
};

// The host's Load statement for control arrays: a new element in the same container, with the
// design-time properties of `element`, invisible until shown. Raises 343 when `element` is no
// array element and 360 when the index is taken.
Control* LoadControlArrayElement(Control* element, short index);
// The Unload statement: only elements loaded at run time may go (362 otherwise).
void UnloadControlArrayElement(Control* element);

}  // namespace korvex
