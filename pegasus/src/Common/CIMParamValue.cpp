#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMParamValue)

CIMParamValue::CIMParamValue(CIMParamValueRep* rep) : _rep(rep) {}

CIMParamValue::CIMParamValue(String parameterName, CIMValue value, Boolean isTyped) : _rep(nullptr)
{
    if (parameterName.size() == 0)
        throw UninitializedObjectException();
    _rep = new CIMParamValueRep;
    _rep->name = parameterName;
    _rep->value = value;
    _rep->isTyped = isTyped;
}

String CIMParamValue::getParameterName() const
{
    return checkedRep(_rep)->name;
}

CIMValue CIMParamValue::getValue() const
{
    return checkedRep(_rep)->value;
}

Boolean CIMParamValue::isTyped() const
{
    return checkedRep(_rep)->isTyped;
}

void CIMParamValue::setParameterName(String& parameterName)
{
    checkedRep(_rep);
    if (parameterName.size() == 0)
        throw UninitializedObjectException();
    _rep->name = parameterName;
}

void CIMParamValue::setValue(CIMValue& value)
{
    checkedRep(_rep)->value = value;
}

void CIMParamValue::setIsTyped(Boolean isTyped)
{
    checkedRep(_rep)->isTyped = isTyped;
}

CIMParamValue CIMParamValue::clone() const
{
    // CIMValue copies are independent values (embedded objects are cloned
    // on the way in and out), so a member-wise copy is a deep copy.
    return CIMParamValue(new CIMParamValueRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
