// Dispatch of the shared delivery routines to the handler of the operation.
#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

void ZDA_Common::handleProcessing(cim_handler_u handler, const cim_method_e method)
{
    switch (method)
    {
    case CIM_ASSOCIATORS:
    case CIM_REFERENCES: handler.objectHandler->processing(); break;
    case CIM_ASSOCIATOR_NAMES:
    case CIM_REFERENCE_NAMES:
    case CIM_ENUMERATE_INSTANCE_NAMES: handler.objectPathHandler->processing(); break;
    case CIM_GET_INSTANCE:
    case CIM_ENUMERATE_INSTANCES: handler.instanceHandler->processing(); break;
    default: break;
    }
}

void ZDA_Common::handleDeliver(cim_handler_u handler, const cim_method_e method, const CIMInstance& instance)
{
    switch (method)
    {
    case CIM_ASSOCIATORS:
    case CIM_REFERENCES: handler.objectHandler->deliver(CIMObject(instance)); break;
    case CIM_ASSOCIATOR_NAMES:
    case CIM_REFERENCE_NAMES:
    case CIM_ENUMERATE_INSTANCE_NAMES: handler.objectPathHandler->deliver(instance.getPath()); break;
    case CIM_GET_INSTANCE:
    case CIM_ENUMERATE_INSTANCES: handler.instanceHandler->deliver(instance); break;
    default: break;
    }
}

void ZDA_Common::handleComplete(cim_handler_u handler, const cim_method_e method)
{
    switch (method)
    {
    case CIM_ASSOCIATORS:
    case CIM_REFERENCES: handler.objectHandler->complete(); break;
    case CIM_ASSOCIATOR_NAMES:
    case CIM_REFERENCE_NAMES:
    case CIM_ENUMERATE_INSTANCE_NAMES: handler.objectPathHandler->complete(); break;
    case CIM_GET_INSTANCE:
    case CIM_ENUMERATE_INSTANCES: handler.instanceHandler->complete(); break;
    default: break;
    }
}

PEGASUS_NAMESPACE_END
