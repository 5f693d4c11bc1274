// The methods of ZDA_InternalCache, answered from the internal cache service.
#include "ZDA_InternalCacheProvider.h"

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_InternalCacheService.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName = "ZDA_InternalCache";
const char SOURCE_FILE[] = "ZDA_InternalCacheProvider";

const Uint32 RETURN_OK = 0;
const Uint32 RETURN_FAILED = 1;

// The output parameter that answers `methodName`, from the service's facts.
// False for a method the class does not have.
bool answer(const CIMName& methodName, const ZDA_InternalCacheService& service, CIMParamValue& out)
{
    if (methodName.equal("GetSystemName"))
        out = CIMParamValue("SystemName", CIMValue(service.getSystemName()));
    else if (methodName.equal("GetSystemHostName"))
        out = CIMParamValue("SystemHostName", CIMValue(service.getSystemHostName()));
    else if (methodName.equal("GetSystemAddress"))
        out = CIMParamValue("SystemAddress", CIMValue(service.getSystemAddress()));
    else if (methodName.equal("GetSystemID"))
        out = CIMParamValue("SystemID", CIMValue(service.getSystemID()));
    else if (methodName.equal("GetSystemType"))
        out = CIMParamValue("SystemType", CIMValue(Sint32(service.getSystemType())));
    else if (methodName.equal("IsQuadPortSystem"))
        out = CIMParamValue("IsQuadPort", CIMValue(service.isQuadPortSystem()));
    else
        return false;
    return true;
}

}  // namespace

ZDA_InternalCacheProvider::ZDA_InternalCacheProvider() = default;
ZDA_InternalCacheProvider::~ZDA_InternalCacheProvider() = default;

void ZDA_InternalCacheProvider::initialize(CIMOMHandle&) {}

void ZDA_InternalCacheProvider::terminate()
{
    delete this;
}

void ZDA_InternalCacheProvider::invokeMethod(const OperationContext& context,
    const CIMObjectPath& objectReference, const CIMName& methodName, const Array<CIMParamValue>&,
    MethodResultResponseHandler& handler)
{
    const CString method = methodName.getString().getCString();
    log_message(4, "--> ZDA_InternalCacheProvider::invokeMethod(), methodName = %s \n", (const char*)method);
    const CIMName className = objectReference.getClassName();
    if (!className.equal(ClassName))
        throw CIMNotSupportedException(ClassName + " Invalid class name" + className.getString());
    CIMObjectPath ownPath = ZDA_Common::buildInternalCacheObjectPath("localhost", "localhost");
    if (objectReference.getNameSpace().isNull())
        ownPath.setNameSpace(CIMNamespaceName());
    if (!ZDA_Common::matchObjectPath(objectReference, ownPath))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    // The array was replaced: the facts are read again on the next call.
    // Nothing is read from the array here, so any caller may ask, including
    // one the new array does not know.
    if (methodName.equal("Refresh"))
    {
        ZDA_InternalCacheService::getInstance()->refresh();
        handler.processing();
        handler.deliver(CIMValue(RETURN_OK));
        handler.complete();
        log_message(4, "<-- ZDA_InternalCacheProvider::invokeMethod()\n");
        return;
    }

    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);

    // Filled from the array on first use; a fill that found the array busy
    // or failing leaves the facts unread, and is tried again next time.
    ZDA_InternalCacheService* service = ZDA_InternalCacheService::getInstance();
    const bool known = service->getStorageArrayUpdateTime() != 0;

    CIMParamValue out;
    if (!answer(methodName, *service, out))
        throw CIMMethodNotFoundException(ClassName + " has no method " + methodName.getString());

    handler.processing();
    if (known)
    {
        handler.deliverParamValue(out);
        handler.deliver(CIMValue(RETURN_OK));
    }
    else
    {
        log_message(2,
            "ZDA_InternalCacheProvider::invokeMethod(): %s: the system facts could not be "
            "read from the array\n",
            (const char*)method);
        handler.deliver(CIMValue(RETURN_FAILED));
    }
    handler.complete();
    log_message(4, "<-- ZDA_InternalCacheProvider::invokeMethod()\n");
}

PEGASUS_NAMESPACE_END
