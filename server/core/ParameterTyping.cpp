#include "ParameterTyping.h"

#include "SchemaObjects.h"

#include <cimxml/Codec.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMValueText.h>

using namespace Pegasus;

namespace zda::server
{

namespace
{

[[noreturn]] void badText(const String& text, CIMType type, const String& what)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
        what + ": \"" + text + "\" is not a valid " + cimTypeToString(type) + " value");
}

template <class T>
CIMValue arrayOf(const Array<String>& texts, CIMType type, const String& what)
{
    Array<T> out;
    for (Uint32 i = 0; i < texts.size(); ++i)
    {
        T element;
        valueFromText(texts[i], type, what).get(element);
        out.append(element);
    }
    return CIMValue(out);
}

CIMValue arrayFromText(const Array<String>& texts, CIMType type, const String& what)
{
    switch (type)
    {
    case CIMTYPE_BOOLEAN: return arrayOf<Boolean>(texts, type, what);
    case CIMTYPE_UINT8: return arrayOf<Uint8>(texts, type, what);
    case CIMTYPE_SINT8: return arrayOf<Sint8>(texts, type, what);
    case CIMTYPE_UINT16: return arrayOf<Uint16>(texts, type, what);
    case CIMTYPE_SINT16: return arrayOf<Sint16>(texts, type, what);
    case CIMTYPE_UINT32: return arrayOf<Uint32>(texts, type, what);
    case CIMTYPE_SINT32: return arrayOf<Sint32>(texts, type, what);
    case CIMTYPE_UINT64: return arrayOf<Uint64>(texts, type, what);
    case CIMTYPE_SINT64: return arrayOf<Sint64>(texts, type, what);
    case CIMTYPE_REAL32: return arrayOf<Real32>(texts, type, what);
    case CIMTYPE_REAL64: return arrayOf<Real64>(texts, type, what);
    case CIMTYPE_CHAR16: return arrayOf<Char16>(texts, type, what);
    case CIMTYPE_STRING: return CIMValue(texts);
    case CIMTYPE_DATETIME: return arrayOf<CIMDateTime>(texts, type, what);
    case CIMTYPE_REFERENCE: return arrayOf<CIMObjectPath>(texts, type, what);
    default:
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + ": embedded objects cannot be given as text");
    }
}

}  // namespace

CIMValue valueFromText(const String& text, CIMType type, const String& what)
{
    if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + ": embedded objects cannot be given as text");
    CIMValue value;
    if (!CIMValueText::toValue(text, type, value))
        badText(text, type, what);
    return value;
}

bool declaresEmbedded(const CIMConstParameter& declared)
{
    return declared.getType() == CIMTYPE_STRING &&
        (declared.findQualifier("EmbeddedInstance") != PEG_NOT_FOUND ||
            declared.findQualifier("EmbeddedObject") != PEG_NOT_FOUND);
}

// Whether `given` is an embedded object sent as text, typed as a string.
bool embeddedAsTypedText(const CIMConstMethod& method, const CIMParamValue& given)
{
    const CIMValue& value = given.getValue();
    if (!given.isTyped() || value.isNull() || value.getType() != CIMTYPE_STRING)
        return false;
    const Uint32 index = method.findParameter(CIMName(given.getParameterName()));
    return index != PEG_NOT_FOUND && declaresEmbedded(method.getParameter(index));
}

// The value of a parameter declared as an embedded instance or object
// that arrived as CIM-XML text (clients that cannot send it typed): the
// object the text holds, an instance for an embedded instance.
CIMValue embeddedFromText(const CIMConstParameter& declared, const CIMValue& value, const String& what)
{
    const bool instance = declared.findQualifier("EmbeddedInstance") != PEG_NOT_FOUND;
    auto decode = [&](const String& text) {
        try
        {
            const CIMObject object = cimxml::decodeEmbeddedObject(text);
            if (instance && !object.isInstance())
                throw CIMException(CIM_ERR_INVALID_PARAMETER, what + ": the text holds no instance");
            return object;
        }
        catch (const cimxml::DecodeError& e)
        {
            throw CIMException(
                CIM_ERR_INVALID_PARAMETER, what + ": the text is no embedded object: " + e.what());
        }
    };
    if (!value.isArray())
    {
        String text;
        value.get(text);
        const CIMObject object = decode(text);
        return instance ? CIMValue(CIMInstance(object)) : CIMValue(object);
    }
    Array<String> texts;
    value.get(texts);
    Array<CIMInstance> instances;
    Array<CIMObject> objects;
    for (Uint32 i = 0; i < texts.size(); ++i)
    {
        const CIMObject object = decode(texts[i]);
        if (instance)
            instances.append(CIMInstance(object));
        else
            objects.append(object);
    }
    return instance ? CIMValue(instances) : CIMValue(objects);
}

Array<CIMParamValue> typeParameters(const CIMConstMethod& method, const Array<CIMParamValue>& inParameters)
{
    Array<CIMParamValue> out;
    for (Uint32 i = 0; i < inParameters.size(); ++i)
    {
        const CIMParamValue& given = inParameters[i];
        if (given.isTyped() && !embeddedAsTypedText(method, given))
        {
            out.append(given);
            continue;
        }
        const String name = given.getParameterName();
        const String what = "parameter " + name + " of method " + method.getName().getString();
        Uint32 index = method.findParameter(CIMName(name));
        if (index == PEG_NOT_FOUND)
            throw CIMException(CIM_ERR_INVALID_PARAMETER,
                "The method " + method.getName().getString() + " has no parameter " + name + ".");
        CIMConstParameter declared = method.getParameter(index);
        const CIMValue value = given.getValue();
        CIMValue typed;
        if (declaresEmbedded(declared) && !value.isNull() && value.getType() == CIMTYPE_STRING &&
            value.isArray() == declared.isArray())
        {
            typed = embeddedFromText(declared, value, what);
        }
        else if (value.isNull())
        {
            typed.setNullValue(declared.getType(), declared.isArray());
        }
        else if (value.isArray() != declared.isArray())
        {
            throw CIMException(CIM_ERR_TYPE_MISMATCH,
                what + (declared.isArray() ? " must be an array" : " must not be an array"));
        }
        else if (value.getType() == declared.getType())
        {
            typed = value;
        }
        else if (value.getType() != CIMTYPE_STRING)
        {
            throw CIMException(CIM_ERR_TYPE_MISMATCH,
                what + " is declared " + cimTypeToString(declared.getType()) + " but was given as " +
                    cimTypeToString(value.getType()));
        }
        else if (value.isArray())
        {
            Array<String> texts;
            value.get(texts);
            typed = arrayFromText(texts, declared.getType(), what);
        }
        else
        {
            String text;
            value.get(text);
            typed = valueFromText(text, declared.getType(), what);
        }
        out.append(CIMParamValue(name, typed, true));
    }
    return out;
}

}  // namespace zda::server
