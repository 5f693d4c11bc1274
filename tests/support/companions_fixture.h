// What the companion provider tests share: the in-process host over the
// simulator's small test array (ledgers checked after each operation), a
// fresh internal cache service per test, and readers of values and errors.
#ifndef ZDA_COMPANIONS_FIXTURE_H
#define ZDA_COMPANIONS_FIXTURE_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <zdasim_control.h>

#include "RecordingFakes.h"
#include "SdkText.h"
#include "ServerHostFixture.h"
#include "ZDA_InternalCacheService.h"

namespace zda_companions_test
{

using namespace Pegasus;

const char ZDA_NS[] = "root/zda";

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

inline std::vector<int> uint16s(const CIMInstance& instance, const char* name)
{
    Array<Uint16> values = get<Array<Uint16>>(instance, name);
    return std::vector<int>(values.getData(), values.getData() + values.size());
}

using zda_test::text;

class CompanionsTest : public zda_test::ServerHostFixture
{
protected:
    // The cache lives in the loaded library and outlives hosts: each test
    // starts it from the array as the test finds it.
    void SetUp() override
    {
        zda_test::ServerHostFixture::SetUp();
        ZDA_InternalCacheService::destroy();
    }
    void TearDown() override
    {
        zda_test::ServerHostFixture::TearDown();
        ZDA_InternalCacheService::destroy();
    }

    static OperationContext admin() { return zda::server::InProcessHost::contextFor("admin"); }

    // The operations as a client of the namespace asks them, as "admin".
    Array<CIMInstance> instancesOf(const char* className, const CIMPropertyList& list = CIMPropertyList())
    {
        return server().enumerateInstances(admin(), ZDA_NS, className, true, false, false, false, list);
    }
    Array<CIMObjectPath> namesOf(const char* className)
    {
        return server().enumerateInstanceNames(admin(), ZDA_NS, className);
    }
    CIMInstance getInstance(const CIMObjectPath& path, const CIMPropertyList& list = CIMPropertyList())
    {
        return server().getInstance(admin(), ZDA_NS, path, false, false, false, list);
    }
    // The association operations from `from` over the association class.
    Array<CIMObjectPath> assocNames(const CIMObjectPath& from, const char* assocClass, const char* role = "",
        const char* resultRole = "", const CIMName& resultClass = CIMName())
    {
        return server().associatorNames(admin(), ZDA_NS, from, assocClass, resultClass, role, resultRole);
    }
    Array<CIMObject> assocObjects(const CIMObjectPath& from, const char* assocClass, const char* role = "",
        const char* resultRole = "", const CIMName& resultClass = CIMName())
    {
        return server().associators(admin(), ZDA_NS, from, assocClass, resultClass, role, resultRole, false,
            false, CIMPropertyList());
    }
    Array<CIMObject> refObjects(const CIMObjectPath& from, const char* assocClass, const char* role = "")
    {
        return server().references(admin(), ZDA_NS, from, assocClass, role, false, false, CIMPropertyList());
    }
    Array<CIMObjectPath> refNames(const CIMObjectPath& from, const char* assocClass, const char* role = "")
    {
        return server().referenceNames(admin(), ZDA_NS, from, assocClass, role);
    }
    // The ElementName of each object or path's instance, in a set.
    template <class Objects>
    std::set<std::string> elementNamesOf(const Objects& objects)
    {
        std::set<std::string> names;
        for (Uint32 i = 0; i < objects.size(); i++)
            names.insert(text(get<String>(getInstance(pathOf(objects[i])), "ElementName")));
        return names;
    }
    static CIMObjectPath pathOf(const CIMObjectPath& path) { return path; }
    static CIMObjectPath pathOf(const CIMObject& object) { return object.getPath(); }

    // The status code of the CIMException `call` throws, -1 for none.
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

// A CIMOMHandle backend answering getClass from the host's repository, for
// tests that drive a provider object directly.
class RepositoryBackend : public zda_test::RecordingCIMOMBackend
{
public:
    explicit RepositoryBackend(zda::server::InProcessHost& host) : _host(host) {}
    CIMClass getClass(const OperationContext&, const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        return _host.repository().getClass(
            nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
    }

private:
    zda::server::InProcessHost& _host;
};

}  // namespace zda_companions_test

#endif
