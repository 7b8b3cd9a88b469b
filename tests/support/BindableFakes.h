// Small controls of the outside kinds the binding contract knows by type name (a date box, a
// bound combo, the product-code boxes), with just the members the binding reads and writes, for
// tests.
#pragma once

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Control.h"
#include "korvex/runtime/Variant.h"

namespace korvex::test {

class FakeDate : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "TDBDate")
    Q_PROPERTY(korvex::Variant Value MEMBER value)
    Q_PROPERTY(korvex::Variant MinDate MEMBER minDate)
    Q_PROPERTY(korvex::Variant MaxDate MEMBER maxDate)
    Q_PROPERTY(bool ReadOnly MEMBER readOnly)
    Q_PROPERTY(QString DataField MEMBER dataField)
    Q_PROPERTY(QString Format MEMBER format)
    Q_PROPERTY(QString DisplayFormat MEMBER displayFormat)
public:
    using Control::Control;
    Variant value = Variant::Null();
    Variant minDate = Date{-657434};
    Variant maxDate = Date{2958465};
    bool readOnly = false;
    QString dataField, format, displayFormat;
};

class FakeCombo : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "TDBCombo")
    Q_PROPERTY(korvex::Variant BoundText MEMBER boundText)
    Q_PROPERTY(bool Locked MEMBER locked)
    Q_PROPERTY(QString DataField MEMBER dataField)
public:
    using Control::Control;
    Variant boundText = QString();
    bool locked = false;
    QString dataField;
};

class FakeProdCode : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "SOPProdCode")
    Q_PROPERTY(QString Text MEMBER text)
    Q_PROPERTY(bool Locked MEMBER locked)
    Q_PROPERTY(QString DataField MEMBER dataField)
public:
    using Control::Control;
    QString text, dataField;
    bool locked = false;
};

}  // namespace korvex::test
