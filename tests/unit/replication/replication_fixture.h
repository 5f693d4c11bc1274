// What the replication module's tests share: the copy services fixture
// (in-process host over the simulator's test array, ledgers checked,
// volume paths by name), request contexts of the test array's users, and
// method calls through the host as a client makes them.
#ifndef ZDA_REPLICATION_FIXTURE_H
#define ZDA_REPLICATION_FIXTURE_H

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <zdasim_control.h>

#include "CimBuilders.h"
#include "copysvcs_fixture.h"
#include "SemaphoreCheckingHandler.h"
#include "ZDA_AssociationFrame.h"
#include "ZDA_InternalCacheService.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_ReplicationServiceProvider.h"
#include "RecordingResponseHandler.h"

namespace zda_replication_test
{

using namespace Pegasus;
using namespace zda_copysvcs_test;

// What labels() gives for some objects, and the member names of a set or group.
using Labels = std::multiset<std::string>;
using Names = std::set<std::string>;

// Short forms of the values tests pass as method parameters.
inline CIMValue u16(Uint16 value)
{
    return CIMValue(value);
}
inline CIMValue str(const std::string& value)
{
    return CIMValue(String(value.c_str()));
}
inline CIMValue refs(std::initializer_list<CIMObjectPath> paths)
{
    Array<CIMObjectPath> list;
    for (const CIMObjectPath& path : paths)
        list.append(path);
    return CIMValue(list);
}
inline CIMValue texts(std::initializer_list<const char*> values)
{
    Array<String> list;
    for (const char* value : values)
        list.append(value);
    return CIMValue(list);
}
// Method parameters by name: args({{"SyncType", u16(7)}, ...}).
inline Array<CIMParamValue> args(std::initializer_list<std::pair<const char*, CIMValue>> list)
{
    Array<CIMParamValue> in;
    for (const auto& p : list)
        in.append(CIMParamValue(p.first, p.second));
    return in;
}

// What `call` throws as "thrown <code>: <message>", or "none".
inline std::string failure(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CIMException& e)
    {
        return "thrown " + std::to_string(e.getCode()) + ": " + text(e.getMessage());
    }
    return "none";
}

// An array call's status as "<code>: <text>".
inline std::string statusText(const api_Status_t& status)
{
    char text[API_ERRTEXT_LEN];
    return std::to_string(status.code) + ": " + api_getErrorTextNoNL(text, sizeof text, &status);
}

// `path` with the key `name` set to the string `value` (added when absent),
// or removed when `value` is null.
inline CIMObjectPath withKey(const CIMObjectPath& path, const char* name, const char* value)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    Uint32 i = 0;
    while (i < keys.size() && !keys[i].getName().equal(name))
        i++;
    if (i < keys.size())
        keys.remove(i);
    if (value)
        keys.insert(i, CIMKeyBinding(name, value, CIMKeyBinding::STRING));
    CIMObjectPath changed = path;
    changed.setKeyBindings(keys);
    return changed;
}

// Classes from the host's repository and properties read through the host.
class HostBackend : public RepositoryBackend
{
public:
    explicit HostBackend(zda::server::InProcessHost& host) : RepositoryBackend(host), _host(host) {}
    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName) override
    {
        return _host.dispatcher().getProperty(context, nameSpace, instanceName, propertyName);
    }

private:
    zda::server::InProcessHost& _host;
};

class ReplicationTest : public CopyServicesTest
{
protected:
    // The test array's users: "operator" may replicate, "viewer" may only
    // read, "noaccess" may not open the array at all.
    static OperationContext as(const char* user, const char* ip = "192.0.2.99")
    {
        return zda::server::InProcessHost::contextFor(user, ip);
    }

    // The path of volume `like` with a DeviceID the array does not know.
    CIMObjectPath unknownVolume(const char* like)
    {
        return withKey(volume(like), "DeviceID", "60002AC0000000000000000000009999");
    }
    // The volumes of these names as one reference array.
    CIMValue volumes(std::initializer_list<const char*> names)
    {
        Array<CIMObjectPath> paths;
        for (const char* name : names)
            paths.append(volume(name));
        return CIMValue(paths);
    }
    static CIMObjectPath vvset(const char* name)
    {
        return ZDA_ReplicationGroupProvider::buildObjectPath(HOST, name);
    }
    static CIMObjectPath rcopyGroup(const char* name)
    {
        return ZDA_RemoteReplicationGroupProvider::buildObjectPath(HOST, name);
    }
    static CIMObjectPath sap(const char* target)
    {
        return ZDA_RemoteServiceAccessPointProvider::buildObjectPath(HOST, target);
    }
    // The far ends of `from` through `association`.
    Array<CIMObjectPath> far(
        const CIMObjectPath& from, const char* association, const CIMName& resultClass = CIMName())
    {
        return assocNames(from, association, "", "", resultClass);
    }
    // Whether getInstance of `path` gives the instance of that path.
    bool foundByPath(const CIMObjectPath& path)
    {
        return ZDA_Common::matchObjectPath(getInstance(path).getPath(), path);
    }
    // What names an object: a volume's ElementName, else the name in its
    // InstanceID, else its Name key.
    std::string label(const CIMObjectPath& path)
    {
        if (path.getClassName().equal("ZDA_StorageVolume"))
            return text(get<String>(getInstance(path), "ElementName"));
        const String id = ZDA_Common::getStringProperty(path, "InstanceID");
        return text(
            id.size() ? ZDA_Common::extractFromInstanceID(id) : ZDA_Common::getStringProperty(path, "Name"));
    }
    template <class Objects>
    Labels labels(const Objects& objects)
    {
        Labels found;
        for (Uint32 i = 0; i < objects.size(); i++)
            found.insert(label(pathOf(objects[i])));
        return found;
    }
    // The status code of getInstance of `path` as `user` (else as admin), -1 for none.
    int readError(const CIMObjectPath& path, const char* user = nullptr)
    {
        return cimErrorOf([&] {
            server().getInstance(
                user ? as(user) : admin(), ZDA_NS, path, false, false, false, CIMPropertyList());
        });
    }
    // The codes the server answers a create, a modify and a delete of the
    // instance at `path` with ("7 7 7": each refused as not supported).
    std::string changeErrors(const CIMObjectPath& path)
    {
        CIMInstance instance(path.getClassName());
        instance.setPath(path);
        const int created = cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, instance); });
        const int modified = cimErrorOf(
            [&] { server().modifyInstance(admin(), ZDA_NS, instance, false, CIMPropertyList()); });
        const int deleted = cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, path); });
        return std::to_string(created) + " " + std::to_string(modified) + " " + std::to_string(deleted);
    }
    // Loads an array description in place of the test array.
    static void loadArray(const std::string& description)
    {
        char error[512] = "";
        ASSERT_EQ(
            zdasim_load_description_text(description.c_str(), "test description", error, sizeof error), 0)
            << error;
        ZDA_InternalCacheService::destroy();
    }
    // The synchronization of the local copy `copy` as the server lists it.
    CIMObjectPath syncOf(const char* copy)
    {
        Array<CIMObjectPath> found = refNames(volume(copy), "ZDA_StorageSynchronized", "SyncedElement");
        EXPECT_EQ(found.size(), 1u) << copy;
        return found.size() ? found[0] : CIMObjectPath();
    }

    // A method call through the host; out receives the output parameters.
    CIMValue call(const OperationContext& context, const CIMObjectPath& path, const char* method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
    {
        out.clear();
        return server().invokeMethod(context, ZDA_NS, path, method, in, out);
    }

    // Runs `call` on the host's own provider of the association class,
    // outside any request, with a recording handler, and gives what the
    // handler saw ("processing deliver(path) complete"). No delivery may
    // come under the semaphore, and the ledgers are checked after.
    template <class Call>
    std::string direct(const char* association, Call call)
    {
        std::optional<zda::server::ProviderId> id = ServerHostFixture::host().registry().find(
            ZDA_NS, association, zda::server::ProviderType::Association);
        EXPECT_TRUE(id.has_value()) << association;
        zda_test::SemaphoreCheckingHandler handler;
        {
            zda::server::ProviderManager::Lease lease = ServerHostFixture::host().providers().acquire(*id);
            call(dynamic_cast<CIMAssociationProvider&>(lease.provider()),
                dynamic_cast<CIMInstanceProvider&>(lease.provider()), handler);
        }
        EXPECT_EQ(handler.deliveriesUnderSemaphore(), 0);
        expectLedgersClean(std::string("a direct call of ") + association);
        return handler.sequence();
    }

    // What the host's provider of `association` answers, outside any request,
    // to the associator names of `object` (or, with `references`, its
    // reference names).
    std::string directNames(const char* association, const CIMObjectPath& object, bool references = false,
        const CIMName& resultClass = CIMName(), const String& role = "", const String& resultRole = "")
    {
        return direct(association, [&](auto& p, auto&, auto& h) {
            if (references)
                p.referenceNames(admin(), object, resultClass, role, h);
            else
                p.associatorNames(admin(), object, association, resultClass, role, resultRole, h);
        });
    }

    // What the host's provider of `association` answers to an enumeration
    // of its names (or, with `instances`, of its instances) while the array
    // call `failing` fails ("" for a busy array, null for no failure).
    std::string enumerateFailing(const char* association, const char* failing, bool instances = false)
    {
        const std::string sequence = direct(association, [&](auto&, auto& p, auto& h) {
            if (failing && *failing)
                zdasim_fault_add(failing, 1, API_E_INVALID, "broken");
            else if (failing)
                zdasim_fault_sem_timeouts(1);
            if (instances)
                p.enumerateInstances(admin(), CIMObjectPath(association), false, false, CIMPropertyList(), h);
            else
                p.enumerateInstanceNames(admin(), CIMObjectPath(association), h);
        });
        zdasim_faults_clear();
        return sequence;
    }

    void SetUp() override
    {
        CopyServicesTest::SetUp();
        service = server().enumerateInstanceNames(admin(), ZDA_NS, "ZDA_ReplicationService")[0];
    }
    void TearDown() override
    {
        if (_direct)
        {
            _direct->terminate();
            attachCIMOMHandleBackend(_handle, nullptr);
        }
        CopyServicesTest::TearDown();
    }

    // A method of the replication service called as `user`: "returned
    // <value>" or "thrown <code>: <message>"; out receives the output
    // parameters.
    std::string outcome(const char* method, const Array<CIMParamValue>& in, const char* user = "admin")
    {
        std::string returned;
        const std::string thrown = failure(
            [&] { returned = "returned " + text(call(as(user), service, method, in, out).toString()); });
        return thrown == "none" ? returned : thrown;
    }

    // A provider of the module as an object of the test, of the class
    // Service that opens what a test needs of it; its calls into the server
    // are answered by the host. One per test, terminated at its end.
    template <class Service>
    Service& directService()
    {
        if (!_direct)
        {
            attachCIMOMHandleBackend(
                _handle, std::make_shared<HostBackend>(zda_test::ServerHostFixture::host()));
            _direct = new Service();
            _direct->initialize(_handle);
        }
        return dynamic_cast<Service&>(*_direct);
    }

    // The vvset's member names, or {"<none>"} when the array has no such set.
    static std::set<std::string> setMembers(const char* name)
    {
        api_sets_t list;
        std::memset(&list, 0, sizeof list);
        EXPECT_EQ(cim_sem_wait(), 0);
        const api_Status_t status = api_getVVSets(name, nullptr, 0, &list);
        cim_sem_post();
        std::set<std::string> members;
        if (status.code != 0 || list.count == 0)
            members.insert("<none>");
        for (int i = 0; status.code == 0 && list.count > 0 && i < list.sets[0].memberCount; i++)
            members.insert(list.sets[0].members[i].name);
        api_freeSets(&list);
        return members;
    }

    // Output parameters of the last call by name; empty when absent.
    template <class T>
    T outValue(const char* name)
    {
        T value;
        const CIMValue v = zda_test::paramNamed(out, name);
        if (!v.isNull())
            v.get(value);
        return value;
    }
    CIMObjectPath outPath(const char* name) { return outValue<CIMObjectPath>(name); }
    Array<CIMObjectPath> outPaths(const char* name) { return outValue<Array<CIMObjectPath>>(name); }
    std::string outText(const char* name) { return text(outValue<String>(name)); }

    // A remote copy group as the array holds it: whether it runs on its
    // first target, its volumes and their far names there.
    struct GroupView
    {
        bool exists = false;
        bool started = false;
        std::vector<std::string> volumes;
        std::vector<std::string> remoteNames;
        std::string target;
        uint32_t mode = 0;
        uint32_t period = 0;
    };
    static GroupView rcopyGroupView(const std::string& name)
    {
        GroupView view;
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        EXPECT_EQ(snapshot.read(API_RCOPY_QUERY_TYPE_GROUPS).code, 0);
        for (rm_group_wrapper* g = snapshot.rcopy.groups; g; g = g->next)
        {
            if (name != g->group.rm_hdr.rm_name)
                continue;
            view.exists = true;
            if (g->gtarget_count > 0)
            {
                view.target = g->gtargets[0].rm_target;
                view.mode = g->gtargets[0].rm_mode;
                view.period = g->gtargets[0].rm_sync_period;
                // Starting (1) or started (2): the group runs on the target.
                view.started = g->gtargets[0].rm_state == 1 || g->gtargets[0].rm_state == 2;
            }
            for (rm_group_vv_wrapper* vv = g->gvvs; vv; vv = vv->next)
            {
                view.volumes.push_back(vv->gvv.rm_local_name);
                view.remoteNames.push_back(vv->map_count > 0 ? vv->maps[0].rm_remote_name : "");
            }
        }
        return view;
    }

    CIMObjectPath service;
    Array<CIMParamValue> out;

private:
    CIMOMHandle _handle;
    CIMProvider* _direct = nullptr;
};

// What setMembers gives for a vvset the array does not have.
const Names NO_SET = {"<none>"};

// The value of the argument `argument` in the journal's last entry of
// `function` that has it ("" when none): the text of a quoted value, else
// the word.
inline std::string lastJournalArgument(const char* function, const char* argument)
{
    const std::string head = std::string(function) + " ";
    const std::string name = std::string(" ") + argument + "=";
    std::string value;
    char entry[1024];
    for (size_t i = 0; zdasim_journal_entry(i, entry, sizeof entry) == 0; i++)
    {
        const std::string line = entry;
        const size_t at = line.find(name);
        if (line.rfind(head, 0) != 0 || at == std::string::npos)
            continue;
        const size_t start = at + name.size();
        value = line[start] == '"' ? line.substr(start + 1, line.find('"', start + 1) - start - 1)
                                   : line.substr(start, line.find(' ', start) - start);
    }
    return value;
}

// The right asked of the array by the last authorization.
inline std::string lastAuthorizationKey()
{
    return lastJournalArgument("api_authorizeCIMUser", "key");
}

// The output parameter of that name, a null value when absent.
inline CIMValue outParam(const Array<CIMParamValue>& out, const char* name)
{
    return zda_test::paramNamed(out, name);
}

}  // namespace zda_replication_test

#endif
