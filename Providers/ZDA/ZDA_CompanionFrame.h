// The steps every companion provider operation shares: refusing a path of a
// class the provider does not serve, opening the array for the user of the
// request, reading the system's identity from the internal cache, making
// one array call under the array semaphore (int or status form), and
// holding the lists the array hands out until they are released.
//
// Header only, so that each companion library carries its own copy and none
// depends on another for it.
#ifndef ZDA_COMPANION_FRAME_H
#define ZDA_COMPANION_FRAME_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_InternalCacheService.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_CompanionFrame
{

// Refuses a path whose class is neither `served` nor `alsoServed` (the
// general class a provider also answers for; none when null) with
// CIMNotSupportedException "<served> Invalid class name<class>".
inline void checkClassName(
    const CIMObjectPath& reference, const String& served, const char* alsoServed = nullptr)
{
    const CIMName className = reference.getClassName();
    if (className.equal(served) || (alsoServed && className.equal(alsoServed)))
        return;
    throw CIMNotSupportedException(served + " Invalid class name" + className.getString());
}

// The system's name and host name from the internal cache service, which
// reads them from the array on first use. False, with a line at level 2
// naming `who`, while the array has not answered that read.
inline bool systemIdentity(const char* who, String& systemName, String& hostName)
{
    ZDA_InternalCacheService* service = ZDA_InternalCacheService::getInstance();
    if (service->getStorageArrayUpdateTime() == 0)
    {
        log_message(2, "%s: the system identity could not be read from the array\n", who);
        return false;
    }
    systemName = service->getSystemName();
    hostName = service->getSystemHostName();
    return true;
}

// Opens the array for the user named by the request's IdentityContainer
// (no container: an empty name, which the array refuses). Throws
// TraceableCIMException CIM_ERR_ACCESS_DENIED "Insufficient privilege for
// the user", naming `file` and `line`, when the array refuses the user.
inline void openArrayForCaller(const OperationContext& context, const char* file, Uint32 line)
{
    String user;
    if (context.contains(IdentityContainer::NAME))
        user = IdentityContainer(context.get(IdentityContainer::NAME)).getUserName();
    if (api_zdaOpenForCimserver((const char*)user.getCString()) != 0)
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", file, line);
}

// Makes one array call that returns an int, holding the array semaphore for
// the call only. Returns the semaphore's time-out code (the call is then not
// made and the semaphore not posted) or the call's result. The caller must
// not hold the semaphore.
template <class Call>
int callUnderSemaphore(Call&& call)
{
    const int semrc = cim_sem_wait();
    if (semrc != 0)
        return semrc;
    const int rc = call();
    cim_sem_post();
    return rc;
}

// Makes one array call that returns an api_Status_t, holding the array
// semaphore for the call only. On a semaphore time-out the call is not made,
// the semaphore is not posted, and the status reads 29 "Semaphore
// Timed-Out", so that the caller handles it like any failed call. The
// caller must not hold the semaphore.
template <class Call>
api_Status_t statusCall(Call&& call)
{
    const int semrc = cim_sem_wait();
    api_Status_t status;
    api_initStatus(&status);
    if (semrc != 0)
    {
        errinfo_set_str(&status, API_E_SEM_TIMEOUT, "Semaphore Timed-Out");
        return status;
    }
    status = call();
    cim_sem_post();
    return status;
}

// Owns a list the array handed out and releases it with free_if_not_null
// on every path, exceptions included.
template <class Record>
class ArrayList
{
public:
    ArrayList() = default;
    ~ArrayList() { free_if_not_null(_records); }
    ArrayList(const ArrayList&) = delete;
    ArrayList& operator=(const ArrayList&) = delete;

    // Releases what is held and gives the slots for the next call.
    Record** out()
    {
        reset();
        return &_records;
    }
    int* count() { return &_count; }
    void reset()
    {
        free_if_not_null(_records);
        _records = nullptr;
        _count = 0;
    }

    Record* begin() const { return _records; }
    Record* end() const { return _records ? _records + _count : _records; }
    int size() const { return _records ? _count : 0; }
    Record& operator[](int i) const { return _records[i]; }

private:
    Record* _records = nullptr;
    int _count = 0;
};

}  // namespace ZDA_CompanionFrame

PEGASUS_NAMESPACE_END

#endif
