// Typed reading of properties, key bindings and method parameters, and the
// writing of instance skeletons.
#include "ZDA_Common.h"

#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// The text of a value in the exit lines; arrays give one text per element,
// each written on a line of its own.
std::vector<std::string> describe(int v)
{
    return {std::to_string(v)};
}
std::vector<std::string> describe(Uint64 v)
{
    return {std::to_string(v)};
}
std::vector<std::string> describe(Uint32 v)
{
    return {std::to_string(v)};
}
std::vector<std::string> describe(Uint16 v)
{
    return {std::to_string(v)};
}
std::vector<std::string> describe(Uint8 v)
{
    return {std::to_string(v)};
}
std::vector<std::string> describe(Boolean v)
{
    return {std::to_string(v ? 1 : 0)};
}
std::vector<std::string> describe(const String& v)
{
    return {(const char*)v.getCString()};
}
std::vector<std::string> describe(const CIMDateTime& v)
{
    return describe(v.toString());
}
std::vector<std::string> describe(const CIMObjectPath& v)
{
    return describe(v.toString());
}
template <class T>
std::vector<std::string> describe(const Array<T>& v)
{
    std::vector<std::string> out;
    for (Uint32 i = 0; i < v.size(); i++)
        out.push_back(describe(v[i]).front());
    return out;
}

template <class T>
int readProperty(CIMInstance& instance, const String& propertyName, T& value, const char* logName)
{
    log_message(4, "-->ZDA_Common::getProperty(%s), propertyName = %s\n", logName,
        (const char*)propertyName.getCString());
    int result = 3;
    Uint32 pos = instance.findProperty(CIMName(propertyName));
    if (pos != PEG_NOT_FOUND)
    {
        CIMValue v = instance.getProperty(pos).getValue();
        if (v.isNull())
        {
            result = 4;
        }
        else
        {
            v.get(value);
            result = 0;
        }
    }
    for (const std::string& text : describe(value))
        log_message(4, "<--ZDA_Common::getProperty(%s), value = %s\n", logName, text.c_str());
    return result;
}

template <class T>
int readParameter(const Array<CIMParamValue>& paramList, const String& paramName, T& paramValue,
    const char* logName, bool logValue = true)
{
    log_message(
        4, "-->ZDA_Common::getParameter(%s), paramName = %s\n", logName, (const char*)paramName.getCString());
    int result = 0;
    bool found = false;
    for (Uint32 i = 0; i < paramList.size(); i++)
    {
        if (!String::equalNoCase(paramList[i].getParameterName(), paramName))
            continue;
        CIMValue v = paramList[i].getValue();
        if (v.isNull())
        {
            // Kept only when a later parameter of the same name is read.
            result = 4;
            continue;
        }
        v.get(paramValue);
        found = true;
        break;
    }
    if (!found)
        result = 3;
    if (logValue)
        log_message(4, "<--ZDA_Common::getParameter(%s), paramValue = %s\n", logName,
            describe(paramValue).empty() ? "" : describe(paramValue).front().c_str());
    else
        log_message(4, "<--ZDA_Common::getParameter(%s)", logName);
    return result;
}

template <class T>
void writeProperty(CIMInstance& instance, const CIMName& propertyName, const T& value)
{
    Uint32 pos = instance.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
        return;
    instance.getProperty(pos).setValue(CIMValue(value));
}

}  // namespace

// ---- instance readers ----------------------------------------------------------------

CIMValue ZDA_Common::getPropertyValue(const CIMInstance& instance, const String& propertyName)
{
    log_message(
        4, "-->ZDA_Common::getStringProperty(), propertyName = %s\n", (const char*)propertyName.getCString());
    if (propertyName.size() == 0 || instance.isUninitialized())
    {
        log_message(3, "\tInvalid property name.\n");
        return CIMValue(String());
    }
    CIMValue value;
    Uint32 pos = instance.findProperty(CIMName(propertyName));
    if (pos != PEG_NOT_FOUND)
        value = instance.getProperty(pos).getValue();
    log_message(
        4, "<--ZDA_Common::getStringProperty(), value = %s\n", (const char*)value.toString().getCString());
    return value;
}

String ZDA_Common::getStringProperty(const CIMInstance& instance, const String& propertyName)
{
    log_message(
        4, "-->ZDA_Common::getStringProperty(), propertyName = %s\n", (const char*)propertyName.getCString());
    if (propertyName.size() == 0 || instance.isUninitialized())
    {
        log_message(3, "\tInvalid property name.\n");
        return String();
    }
    String value;
    Uint32 pos = instance.findProperty(CIMName(propertyName));
    if (pos != PEG_NOT_FOUND)
    {
        const CIMValue& v = instance.getProperty(pos).getValue();
        if (!v.isNull())
            v.get(value);
    }
    log_message(4, "<--ZDA_Common::getStringProperty(), value = %s\n", (const char*)value.getCString());
    return value;
}

String ZDA_Common::getStringProperty(const CIMObjectPath& objectPath, const String& propertyName)
{
    String value;
    const CIMName name(propertyName);
    const Array<CIMKeyBinding>& keys = objectPath.getKeyBindings();
    // The last key of the name wins: the walk does not stop at a match.
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(name))
            value = keys[i].getValue();
    }
    return value;
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, CIMObjectPath& value)
{
    // Logged under the name of the Array<String> reader, as the logs of
    // existing installations read.
    return readProperty(instance, propertyName, value, "Array<String>");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<String>& value)
{
    return readProperty(instance, propertyName, value, "Array<String>");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<int>& value)
{
    return readProperty(instance, propertyName, value, "Array<Sint32>");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<Uint16>& value)
{
    return readProperty(instance, propertyName, value, "Array<Uint16>");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint64& value)
{
    return readProperty(instance, propertyName, value, "uint64");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint32& value)
{
    return readProperty(instance, propertyName, value, "uint32");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint16& value)
{
    return readProperty(instance, propertyName, value, "uint16");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint8& value)
{
    return readProperty(instance, propertyName, value, "uint8");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, Boolean& value)
{
    return readProperty(instance, propertyName, value, "Boolean");
}

int ZDA_Common::getProperty(CIMInstance& instance, const String& propertyName, CIMDateTime& value)
{
    return readProperty(instance, propertyName, value, "CIMDateTime");
}

// ---- parameter readers -------------------------------------------------------------

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint8& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Uint8");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint16& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Uint16");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint32& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Uint32");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint64& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Uint64");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Boolean& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Boolean");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, CIMDateTime& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "CIMDateTime");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, CIMObjectPath& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "CIMObjectPath");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, String& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "String");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Array<Uint16>& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Array<Uint16>");
}

int ZDA_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Array<String>& paramValue)
{
    return readParameter(paramList, paramName, paramValue, "Array<String>", false);
}

// ---- writers ---------------------------------------------------------------------------

CIMInstance ZDA_Common::buildInstanceSkeleton(CIMClass& myClass)
{
    log_message(4, "-->ZDA_Common::_buildInstanceSkeleton()\n");
    CIMInstance instance = myClass.buildInstance(false, false, CIMPropertyList());
    log_message(4, "<--ZDA_Common::_buildInstanceSkeleton()\n");
    return instance;
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const String& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const char* value)
{
    writeProperty(instance, propertyName, String(value));
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Boolean& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint8& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint16& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint32& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint64& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Sint16& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<String>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint16>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<int>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint64>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Boolean>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<CIMDateTime>& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMObjectPath& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMDateTime& value)
{
    writeProperty(instance, propertyName, value);
}

void ZDA_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMInstance& value)
{
    Uint32 pos = instance.findProperty(propertyName);
    if (pos != PEG_NOT_FOUND)
        instance.removeProperty(pos);
    instance.addProperty(CIMProperty(propertyName, CIMValue(value)));
}

void ZDA_Common::setPropertyValueToNull(CIMInstance& instance, CIMName propertyName, CIMType cimtype)
{
    CIMValue value;
    value.setNullValue(cimtype, false, 0);
    Uint32 pos = instance.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
        return;
    instance.getProperty(pos).setValue(value);
}

PEGASUS_NAMESPACE_END
