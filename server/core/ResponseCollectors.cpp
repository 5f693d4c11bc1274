#include "ResponseCollectors.h"

using namespace Pegasus;

namespace zda::server
{

namespace
{

[[noreturn]] void refuseUninitialized()
{
    throw CIMException(CIM_ERR_FAILED, "The object is not initialized.");
}

}  // namespace

void InstanceCollector::deliver(const CIMInstance& instance)
{
    if (instance.isUninitialized())
        refuseUninitialized();
    if (_single && _instances.size() > 0)
        throw CIMException(CIM_ERR_FAILED, "Too many objects delivered.");
    _instances.append(instance);
}

void InstanceCollector::deliver(const Array<CIMInstance>& instances)
{
    for (Uint32 i = 0; i < instances.size(); ++i)
        deliver(instances[i]);
}

void InstanceCollector::complete()
{
    if (_single && _instances.size() == 0)
        throw CIMException(CIM_ERR_FAILED, "Too few objects delivered.");
    CollectorBase::complete();
}

void ObjectPathCollector::deliver(const CIMObjectPath& objectPath)
{
    if (objectPath.getClassName().isNull())
        refuseUninitialized();
    _paths.append(objectPath);
}

void ObjectPathCollector::deliver(const Array<CIMObjectPath>& objectPaths)
{
    for (Uint32 i = 0; i < objectPaths.size(); ++i)
        deliver(objectPaths[i]);
}

void ObjectCollector::deliver(const CIMObject& object)
{
    if (object.isUninitialized())
        refuseUninitialized();
    _objects.append(object);
}

void ObjectCollector::deliver(const Array<CIMObject>& objects)
{
    for (Uint32 i = 0; i < objects.size(); ++i)
        deliver(objects[i]);
}

void InstanceForwarder::deliver(const CIMInstance& instance)
{
    if (instance.isUninitialized())
        refuseUninitialized();
    forward([&] { _consumer(instance); });
}

void InstanceForwarder::deliver(const Array<CIMInstance>& instances)
{
    for (Uint32 i = 0; i < instances.size(); ++i)
        deliver(instances[i]);
}

void ObjectPathForwarder::deliver(const CIMObjectPath& objectPath)
{
    if (objectPath.getClassName().isNull())
        refuseUninitialized();
    forward([&] { _consumer(objectPath); });
}

void ObjectPathForwarder::deliver(const Array<CIMObjectPath>& objectPaths)
{
    for (Uint32 i = 0; i < objectPaths.size(); ++i)
        deliver(objectPaths[i]);
}

void ObjectForwarder::deliver(const CIMObject& object)
{
    if (object.isUninitialized())
        refuseUninitialized();
    forward([&] { _consumer(object); });
}

void ObjectForwarder::deliver(const Array<CIMObject>& objects)
{
    for (Uint32 i = 0; i < objects.size(); ++i)
        deliver(objects[i]);
}

void MethodResultCollector::deliverParamValue(const CIMParamValue& outParamValue)
{
    if (outParamValue.isUninitialized())
        refuseUninitialized();
    // A reference that names no class is no reference at all: it travels as
    // a null reference rather than as an instance name without a class.
    const CIMValue& value = outParamValue.getValue();
    if (!value.isNull() && !value.isArray() && value.getType() == CIMTYPE_REFERENCE)
    {
        CIMObjectPath path;
        value.get(path);
        if (path.getClassName().isNull())
        {
            _outParameters.append(CIMParamValue(outParamValue.getParameterName(),
                CIMValue(CIMTYPE_REFERENCE, false), outParamValue.isTyped()));
            return;
        }
    }
    _outParameters.append(outParamValue);
}

void MethodResultCollector::deliverParamValue(const Array<CIMParamValue>& outParamValues)
{
    for (Uint32 i = 0; i < outParamValues.size(); ++i)
        deliverParamValue(outParamValues[i]);
}

void MethodResultCollector::deliver(const CIMValue& returnValue)
{
    if (returnValue.isNull())
        refuseUninitialized();
    _returnValue = returnValue;
}

}  // namespace zda::server
