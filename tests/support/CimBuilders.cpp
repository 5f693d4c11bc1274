#include "CimBuilders.h"

using namespace Pegasus;

namespace zda_test
{

CIMObjectPath instancePath(const std::string& nameSpace, const std::string& className,
    std::initializer_list<std::pair<std::string, std::string>> stringKeys, const std::string& host)
{
    Array<CIMKeyBinding> keys;
    for (const auto& key : stringKeys)
        keys.append(
            CIMKeyBinding(CIMName(key.first.c_str()), String(key.second.c_str()), CIMKeyBinding::STRING));
    return CIMObjectPath(
        String(host.c_str()), CIMNamespaceName(nameSpace.c_str()), CIMName(className.c_str()), keys);
}

CIMParamValue param(const std::string& name, const CIMValue& value)
{
    return CIMParamValue(String(name.c_str()), value, true);
}

CIMParamValue untypedParam(const std::string& name, const std::string& text)
{
    return CIMParamValue(String(name.c_str()), CIMValue(String(text.c_str())), false);
}

CIMParamValue untypedParam(const std::string& name, std::initializer_list<std::string> texts)
{
    Array<String> values;
    for (const std::string& text : texts)
        values.append(String(text.c_str()));
    return CIMParamValue(String(name.c_str()), CIMValue(values), false);
}

Array<CIMParamValue> params(std::initializer_list<CIMParamValue> values)
{
    Array<CIMParamValue> out;
    for (const CIMParamValue& value : values)
        out.append(value);
    return out;
}

CIMValue paramNamed(const Array<CIMParamValue>& values, const std::string& name)
{
    for (Uint32 i = 0; i < values.size(); ++i)
        if (String::equalNoCase(values[i].getParameterName(), String(name.c_str())))
            return values[i].getValue();
    return CIMValue();
}

CIMPropertyList propertyList(std::initializer_list<std::string> names)
{
    Array<CIMName> list;
    for (const std::string& name : names)
        list.append(CIMName(name.c_str()));
    return CIMPropertyList(list);
}

}  // namespace zda_test
