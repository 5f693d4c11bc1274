// ZDA_InternalCacheService: the process-wide cache of the system's identity
// and of the CIM classes the providers build their instances from.
//
// The system facts (name, host name, address, id, type, quad port flag and
// the policy flags) are read from the array when the service is first
// reached, and kept until refresh() or destroy(). Classes are fetched from the server
// through CIMOMHandle::getClass on first use and kept per namespace, class
// name and request flags.
//
// Thread safety: every member may be called from any number of threads at
// once, except destroy(), which the caller must not race with other use.
// No lock of the service is held across a call into the array or the server.
#ifndef ZDA_INTERNAL_CACHE_SERVICE_H
#define ZDA_INTERNAL_CACHE_SERVICE_H

#include <atomic>
#include <ctime>
#include <map>
#include <mutex>
#include <string>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"

PEGASUS_NAMESPACE_BEGIN

// One of the class tables: the key is the namespace, the class name (both
// lower-cased, as CIM names compare without case), the class origin flag and
// the property list.
typedef std::map<std::string, CIMClass> ZDA_CIMClassHashTable;

class ZDA_InternalCacheService
{
public:
    // The one service of the process, created and filled from the array on
    // first use. Filling takes the array semaphore, so the caller must not
    // hold it. A fill that fails (the array did not answer) is logged and
    // tried again on the next call. Never returns null.
    static ZDA_InternalCacheService* getInstance();

    // Drops the service: the next getInstance() makes and fills a new one,
    // so a process that loads another array starts clean. Pointers returned
    // before are dangling afterwards.
    static void destroy();

    // Forgets the system facts, so that the next getInstance() reads them
    // from the array again: called when the array behind the process was
    // replaced. Safe while other threads use the service; the cached
    // classes stay, as they do not depend on the array.
    void refresh();

    String getSystemAddress() const;  // IPv4 address text, "" when the array has none
    String getSystemName() const;
    String getSystemHostName() const;
    Uint8 isQuadPortSystem() const;
    Uint32 getSystemID() const;
    int getSystemType() const;
    // When the facts were last read from the array.
    time_t getStorageArrayUpdateTime() const;

    // The policy flags, read from the array with the other facts; setPolicy
    // replaces them for the life of the service. Defined here so that every
    // library including this header agrees on them without linking to more.
    cim_policy_t getPolicy() const { return _policy.load(); }
    void setPolicy(cim_policy_t policy) { _policy.store(policy); }

    // The class as the server gives it for these arguments, from the cache
    // or fetched through cimom.getClass and then cached. The result is a
    // copy the caller may change. Errors of the server pass on as its
    // exceptions; nothing is cached then.
    CIMClass getStoredCIMClass(CIMOMHandle& cimom, const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // Which of the four class tables serves a request with these flags.
    static Uint32 getClassHashArrayIndex(Boolean localOnly, Boolean includeQualifiers);

    // Forgets every cached class.
    void cleanupRepository();

private:
    ZDA_InternalCacheService();
    ZDA_InternalCacheService(const ZDA_InternalCacheService&) = delete;
    ZDA_InternalCacheService& operator=(const ZDA_InternalCacheService&) = delete;

    // Reads the system facts from the array. Returns false when the array
    // did not answer; the facts are left empty then.
    bool initSystemInfo();

    CIMClass getClassFromRepository(CIMOMHandle& cimom, const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    mutable std::mutex _factsMutex;  // guards the facts below
    std::atomic<bool> _filled{false};
    Uint32 _generation = 0;  // counts refresh() calls
    String _systemAddress;
    String _systemName;
    std::atomic<cim_policy_t> _policy{0};
    time_t _getStorageArrayUpdateTime = 0;
    String _systemHostName;
    Uint8 _isQuadPort = 0;
    Uint32 _systemID = 0;
    int _systemType = 0;

    std::mutex _classMutex;  // guards g_cimclassTable
    ZDA_CIMClassHashTable g_cimclassTable[4];
};

PEGASUS_NAMESPACE_END

#endif
