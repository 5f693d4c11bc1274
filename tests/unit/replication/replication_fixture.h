// What the replication module's tests share: the copy services fixture
// (in-process host over the simulator's test array, ledgers checked,
// volume paths by name), request contexts of the test array's users, and
// method calls through the host as a client makes them.
#ifndef ZDA_REPLICATION_FIXTURE_H
#define ZDA_REPLICATION_FIXTURE_H

#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <zdasim_control.h>

#include "copysvcs_fixture.h"
#include "SemaphoreCheckingHandler.h"
#include "ZDA_ReplicationServiceProvider.h"
#include "RecordingResponseHandler.h"

namespace zda_replication_test
{

using namespace Pegasus;
using namespace zda_copysvcs_test;

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
        CIMObjectPath path = volume(like);
        Array<CIMKeyBinding> keys = path.getKeyBindings();
        for (Uint32 i = 0; i < keys.size(); i++)
            if (keys[i].getName().equal("DeviceID"))
                keys[i].setValue("60002AC0000000000000000000009999");
        path.setKeyBindings(keys);
        return path;
    }

    // A method call through the host; out receives the output parameters.
    CIMValue call(const OperationContext& context, const CIMObjectPath& path, const char* method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
    {
        out.clear();
        return server().invokeMethod(context, ZDA_NS, path, method, in, out);
    }

    // Runs `call(provider, handler)` on a provider of our own, initialized
    // on a handle that reaches the in-process host; the ledgers are checked
    // afterwards, naming `what`.
    template <class Provider, class Call>
    void directCall(zda_test::RecordingResponseHandler& handler, Call call, const char* what)
    {
        CIMOMHandle handle;
        attachCIMOMHandleBackend(
            handle, std::make_shared<RepositoryBackend>(zda_test::ServerHostFixture::host()));
        Provider* provider = new Provider();
        provider->initialize(handle);
        try
        {
            call(*provider, handler);
        }
        catch (...)
        {
            provider->terminate();
            attachCIMOMHandleBackend(handle, nullptr);
            throw;
        }
        provider->terminate();
        attachCIMOMHandleBackend(handle, nullptr);
        expectLedgersClean(what);
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
        try
        {
            return "returned " + text(call(as(user), service, method, in, out).toString());
        }
        catch (const CIMException& e)
        {
            return "thrown " + std::to_string(e.getCode()) + ": " + text(e.getMessage());
        }
    }

    // The service as an object of the test, of the class Service that opens
    // what a test needs of it; its calls into the server are answered from
    // the host's repository. One per test, terminated at its end.
    template <class Service>
    Service& directService()
    {
        if (!_direct)
        {
            attachCIMOMHandleBackend(
                _handle, std::make_shared<RepositoryBackend>(zda_test::ServerHostFixture::host()));
            _direct = new Service();
            _direct->initialize(_handle);
        }
        return static_cast<Service&>(*_direct);
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

    CIMObjectPath service;
    Array<CIMParamValue> out;

private:
    CIMOMHandle _handle;
    ZDA_ReplicationServiceProvider* _direct = nullptr;
};

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
    for (Uint32 i = 0; i < out.size(); i++)
        if (String::equalNoCase(out[i].getParameterName(), name))
            return out[i].getValue();
    return CIMValue();
}

}  // namespace zda_replication_test

#endif
