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
    Count,          // VALUE; Uint32, null when absent (flagDefault: 0 instead)
};

struct ParamDescriptor
{
    const char* name;
    ParamKind kind;
    bool required;
    bool flagDefault;  // for Flag parameters
};

struct OperationDescriptor
{
    Intrinsic op;
    const char* name;
    ResultShape shape;
    const ParamDescriptor* params;
    unsigned paramCount;
};

const OperationDescriptor& operationDescriptor(Intrinsic op);

// The value an absent parameter has.
CIMParamValue defaultParameter(const ParamDescriptor& entry);

}  // namespace cimxml

#endif
