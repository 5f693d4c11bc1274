#include "ScriptedFakes.h"

using namespace Pegasus;

namespace zda_test
{

namespace
{
[[noreturn]] void notScripted(const char* operation)
{
    throw CIMException(CIM_ERR_NOT_SUPPORTED,
        String(operation) + " is not scripted in this test");
}
}  // namespace

// ScriptedCIMOMBackend

CIMClass ScriptedCIMOMBackend::getClass(const OperationContext&, const CIMNamespaceName&,
    const CIMName&, Boolean, Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("getClass");
}
Array<CIMClass> ScriptedCIMOMBackend::enumerateClasses(const OperationContext&,
    const CIMNamespaceName&, const CIMName&, Boolean, Boolean, Boolean, Boolean)
{
    notScripted("enumerateClasses");
}
Array<CIMName> ScriptedCIMOMBackend::enumerateClassNames(const OperationContext&,
    const CIMNamespaceName&, const CIMName&, Boolean)
{
    notScripted("enumerateClassNames");
}
void ScriptedCIMOMBackend::createClass(const OperationContext&, const CIMNamespaceName&,
    const CIMClass&)
{
    notScripted("createClass");
}
void ScriptedCIMOMBackend::modifyClass(const OperationContext&, const CIMNamespaceName&,
    const CIMClass&)
{
    notScripted("modifyClass");
}
void ScriptedCIMOMBackend::deleteClass(const OperationContext&, const CIMNamespaceName&,
    const CIMName&)
{
    notScripted("deleteClass");
}
CIMInstance ScriptedCIMOMBackend::getInstance(const OperationContext&, const CIMNamespaceName&,
    const CIMObjectPath&, Boolean, Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("getInstance");
}
Array<CIMInstance> ScriptedCIMOMBackend::enumerateInstances(const OperationContext&,
    const CIMNamespaceName&, const CIMName&, Boolean, Boolean, Boolean, Boolean,
    const CIMPropertyList&)
{
    notScripted("enumerateInstances");
}
Array<CIMObjectPath> ScriptedCIMOMBackend::enumerateInstanceNames(const OperationContext&,
    const CIMNamespaceName&, const CIMName&)
{
    notScripted("enumerateInstanceNames");
}
CIMObjectPath ScriptedCIMOMBackend::createInstance(const OperationContext&,
    const CIMNamespaceName&, const CIMInstance&)
{
    notScripted("createInstance");
}
void ScriptedCIMOMBackend::modifyInstance(const OperationContext&, const CIMNamespaceName&,
    const CIMInstance&, Boolean, const CIMPropertyList&)
{
    notScripted("modifyInstance");
}
void ScriptedCIMOMBackend::deleteInstance(const OperationContext&, const CIMNamespaceName&,
    const CIMObjectPath&)
{
    notScripted("deleteInstance");
}
Array<CIMObject> ScriptedCIMOMBackend::execQuery(const OperationContext&,
    const CIMNamespaceName&, const String&, const String&)
{
    notScripted("execQuery");
}
Array<CIMObject> ScriptedCIMOMBackend::associators(const OperationContext&,
    const CIMNamespaceName&, const CIMObjectPath&, const CIMName&, const CIMName&,
    const String&, const String&, Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("associators");
}
Array<CIMObjectPath> ScriptedCIMOMBackend::associatorNames(const OperationContext&,
    const CIMNamespaceName&, const CIMObjectPath&, const CIMName&, const CIMName&,
    const String&, const String&)
{
    notScripted("associatorNames");
}
Array<CIMObject> ScriptedCIMOMBackend::references(const OperationContext&,
    const CIMNamespaceName&, const CIMObjectPath&, const CIMName&, const String&, Boolean,
    Boolean, const CIMPropertyList&)
{
    notScripted("references");
}
Array<CIMObjectPath> ScriptedCIMOMBackend::referenceNames(const OperationContext&,
    const CIMNamespaceName&, const CIMObjectPath&, const CIMName&, const String&)
{
    notScripted("referenceNames");
}
CIMValue ScriptedCIMOMBackend::getProperty(const OperationContext&, const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&)
{
    notScripted("getProperty");
}
void ScriptedCIMOMBackend::setProperty(const OperationContext&, const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const CIMValue&)
{
    notScripted("setProperty");
}
CIMValue ScriptedCIMOMBackend::invokeMethod(const OperationContext&, const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const Array<CIMParamValue>&, Array<CIMParamValue>&)
{
    notScripted("invokeMethod");
}
OperationContext ScriptedCIMOMBackend::getResponseContext()
{
    notScripted("getResponseContext");
}

// ScriptedClientTransport

void ScriptedClientTransport::setTimeout(Uint32) {}

CIMClass ScriptedClientTransport::getClass(const CIMNamespaceName&, const CIMName&, Boolean,
    Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("getClass");
}
Array<CIMClass> ScriptedClientTransport::enumerateClasses(const CIMNamespaceName&,
    const CIMName&, Boolean, Boolean, Boolean, Boolean)
{
    notScripted("enumerateClasses");
}
Array<CIMName> ScriptedClientTransport::enumerateClassNames(const CIMNamespaceName&,
    const CIMName&, Boolean)
{
    notScripted("enumerateClassNames");
}
void ScriptedClientTransport::createClass(const CIMNamespaceName&, const CIMClass&)
{
    notScripted("createClass");
}
void ScriptedClientTransport::modifyClass(const CIMNamespaceName&, const CIMClass&)
{
    notScripted("modifyClass");
}
void ScriptedClientTransport::deleteClass(const CIMNamespaceName&, const CIMName&)
{
    notScripted("deleteClass");
}
CIMInstance ScriptedClientTransport::getInstance(const CIMNamespaceName&, const CIMObjectPath&,
    Boolean, Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("getInstance");
}
Array<CIMInstance> ScriptedClientTransport::enumerateInstances(const CIMNamespaceName&,
    const CIMName&, Boolean, Boolean, Boolean, Boolean, const CIMPropertyList&)
{
    notScripted("enumerateInstances");
}
Array<CIMObjectPath> ScriptedClientTransport::enumerateInstanceNames(const CIMNamespaceName&,
    const CIMName&)
{
    notScripted("enumerateInstanceNames");
}
CIMObjectPath ScriptedClientTransport::createInstance(const CIMNamespaceName&,
    const CIMInstance&)
{
    notScripted("createInstance");
}
void ScriptedClientTransport::modifyInstance(const CIMNamespaceName&, const CIMInstance&,
    Boolean, const CIMPropertyList&)
{
    notScripted("modifyInstance");
}
void ScriptedClientTransport::deleteInstance(const CIMNamespaceName&, const CIMObjectPath&)
{
    notScripted("deleteInstance");
}
Array<CIMObject> ScriptedClientTransport::execQuery(const CIMNamespaceName&, const String&,
    const String&)
{
    notScripted("execQuery");
}
Array<CIMObject> ScriptedClientTransport::associators(const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const CIMName&, const String&, const String&, Boolean,
    Boolean, const CIMPropertyList&)
{
    notScripted("associators");
}
Array<CIMObjectPath> ScriptedClientTransport::associatorNames(const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const CIMName&, const String&, const String&)
{
    notScripted("associatorNames");
}
Array<CIMObject> ScriptedClientTransport::references(const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const String&, Boolean, Boolean,
    const CIMPropertyList&)
{
    notScripted("references");
}
Array<CIMObjectPath> ScriptedClientTransport::referenceNames(const CIMNamespaceName&,
    const CIMObjectPath&, const CIMName&, const String&)
{
    notScripted("referenceNames");
}
CIMValue ScriptedClientTransport::getProperty(const CIMNamespaceName&, const CIMObjectPath&,
    const CIMName&)
{
    notScripted("getProperty");
}
void ScriptedClientTransport::setProperty(const CIMNamespaceName&, const CIMObjectPath&,
    const CIMName&, const CIMValue&)
{
    notScripted("setProperty");
}
CIMValue ScriptedClientTransport::invokeMethod(const CIMNamespaceName&, const CIMObjectPath&,
    const CIMName&, const Array<CIMParamValue>&, Array<CIMParamValue>&)
{
    notScripted("invokeMethod");
}

}  // namespace zda_test
