// What the companion provider tests share: the in-process host with the
// project's MOF and the built provider libraries over the simulator's small
// test array (ledgers checked after each operation), a fresh internal cache
// service per test, and small readers of instances and CIM errors.
#ifndef ZDA_COMPANIONS_FIXTURE_H
#define ZDA_COMPANIONS_FIXTURE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <zdasim_control.h>

#include "RecordingFakes.h"
#include "ServerHostFixture.h"
#include "ZDA_InternalCacheService.h"

namespace zda_companions_test
{

using namespace Pegasus;

class CompanionsTest : public zda_test::ServerHostFixture
{
protected:
    void SetUp() override
    {
        zda_test::ServerHostFixture::SetUp();
        // The cache outlives hosts (it lives in the loaded library): start
        // each test from the array as it is now.
        ZDA_InternalCacheService::destroy();
    }
    void TearDown() override
    {
        zda_test::ServerHostFixture::TearDown();
        ZDA_InternalCacheService::destroy();
    }

    static OperationContext admin() { return zda::server::InProcessHost::contextFor("admin"); }

    // The class as a provider gets it from the server for these flags.
    CIMClass storedClass(const char* nameSpace, const char* className,
        const CIMPropertyList& propertyList = CIMPropertyList())
    {
        return host().repository().getClass(nameSpace, className, false, true, false,
            propertyList);
    }

    // The status code of the CIMException `call` throws; -1 when it throws
    // none.
    static int cimErrorOf(const std::function<void()>& call)
    {
        try
        {
            call();
        }
        catch (const CIMException& e)
        {
            return e.getCode();
        }
        return -1;
    }
};

// Property values, by name.
inline CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    const Uint32 at = instance.findProperty(name);
    return at == PEG_NOT_FOUND ? CIMValue() : instance.getProperty(at).getValue();
}

template <class T>
T get(const CIMInstance& instance, const char* name)
{
    T value = T();
    valueOf(instance, name).get(value);
    return value;
}

// The values of a uint16 array property, as numbers a test can compare.
inline std::vector<int> uint16s(const CIMInstance& instance, const char* name)
{
    Array<Uint16> values = get<Array<Uint16>>(instance, name);
    std::vector<int> out;
    for (Uint32 i = 0; i < values.size(); i++)
        out.push_back(values[i]);
    return out;
}

inline std::string text(const String& s)
{
    return (const char*)s.getCString();
}

// A CIMOMHandle backend answering getClass from the host's repository, for
// tests that drive a provider object directly.
class RepositoryBackend : public zda_test::RecordingCIMOMBackend
{
public:
    explicit RepositoryBackend(zda::server::InProcessHost& host) : _host(host) {}
    CIMClass getClass(const OperationContext&, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return _host.repository().getClass(nameSpace, className, localOnly, includeQualifiers,
            includeClassOrigin, propertyList);
    }

private:
    zda::server::InProcessHost& _host;
};

}  // namespace zda_companions_test

#endif
