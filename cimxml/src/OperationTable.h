// The named parameters of each intrinsic operation: how each travels, and
// the value it has when a client leaves it out.
#ifndef ZDA_CIMXML_OPERATIONTABLE_H
#define ZDA_CIMXML_OPERATIONTABLE_H

#include <cimxml/Operation.h>

namespace cimxml
{

enum class ParamKind
{
    ClassName,      // CLASSNAME; String in the model
    InstanceName,   // INSTANCENAME; CIMObjectPath
    ObjectName,     // INSTANCENAME or CLASSNAME; CIMObjectPath
    Flag,           // VALUE TRUE/FALSE; Boolean
    Text,           // VALUE; String
    PropertyList,   // VALUE.ARRAY; Array<String>, null for all
    Instance,       // INSTANCE; CIMInstance
    NamedInstance,  // VALUE.NAMEDINSTANCE; CIMInstance with path
    Class,          // CLASS; CIMObject holding a CIMClass
    AnyValue,       // VALUE, VALUE.ARRAY, VALUE.REFERENCE; as sent
};

struct ParamSpec
{
    const char* name;
    ParamKind kind;
    bool required;
    bool flagDefault;  // for Flag parameters
};

struct OperationSpec
{
    Intrinsic op;
    const char* name;
    ResultShape shape;
    const ParamSpec* params;
    unsigned paramCount;
};

const OperationSpec& operationSpec(Intrinsic op);

// The value an absent parameter has.
CIMParamValue defaultParameter(const ParamSpec& spec);

}  // namespace cimxml

#endif
