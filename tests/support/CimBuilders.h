// Short ways to write the paths, parameters and lists that tests pass to the
// server and to providers.
#ifndef ZDA_TESTS_CIM_BUILDERS_H
#define ZDA_TESTS_CIM_BUILDERS_H

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace zda_test
{

// An instance path with string keys: instancePath("root/zda", "ZDA_X",
// {{"InstanceID", "a"}}). Host empty unless given.
Pegasus::CIMObjectPath instancePath(const std::string& nameSpace, const std::string& className,
    std::initializer_list<std::pair<std::string, std::string>> stringKeys,
    const std::string& host = std::string());

// A typed input or output parameter.
Pegasus::CIMParamValue param(const std::string& name, const Pegasus::CIMValue& value);
// A parameter as a CIM-XML request brings it when the client gave no type:
// its text, untyped.
Pegasus::CIMParamValue untypedParam(const std::string& name, const std::string& text);
Pegasus::CIMParamValue untypedParam(const std::string& name, std::initializer_list<std::string> texts);

Pegasus::Array<Pegasus::CIMParamValue> params(std::initializer_list<Pegasus::CIMParamValue> values);

// The value of the parameter called `name` (ignoring case); a null value
// when there is none.
Pegasus::CIMValue paramNamed(const Pegasus::Array<Pegasus::CIMParamValue>& values, const std::string& name);

// A non-null property list.
Pegasus::CIMPropertyList propertyList(std::initializer_list<std::string> names);

}  // namespace zda_test

#endif
