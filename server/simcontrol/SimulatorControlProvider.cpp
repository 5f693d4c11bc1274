// The method provider behind ZDA_SimulatorControl: each method is one
// control of the array simulator this server process runs on. The controls
// can wipe the array and lock users out, so only users whose array rights
// include changing the system's settings may call them.
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include <zdaapi_base.h>
#include <zdasim_control.h>

#include <string>
#include <vector>

PEGASUS_USING_PEGASUS;

namespace
{

class Arguments
{
public:
    explicit Arguments(const Array<CIMParamValue>& in) : _in(in) {}

    template <class T>
    T get(const char* name, T fallback) const
    {
        for (Uint32 i = 0; i < _in.size(); i++)
        {
            if (!String::equalNoCase(_in[i].getParameterName(), name))
                continue;
            CIMValue v = _in[i].getValue();
            if (v.isNull())
                return fallback;
            T out;
            v.get(out);
            return out;
        }
        return fallback;
    }

    std::string text(const char* name) const
    {
        String s = get<String>(name, String());
        return std::string(static_cast<const char*>(s.getCString()));
    }

private:
    const Array<CIMParamValue>& _in;
};

// The providers keep the system's identity and policy for the life of the
// process; after the array is replaced they are told to read it again
// through the method their cache answers.
void refreshProviderCaches(CIMOMHandle& cimom, const OperationContext& context)
{
    CIMObjectPath cache;
    cache.setClassName("ZDA_InternalCache");
    cache.setNameSpace("root/PG_Internal");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", "localhost-InternalCache", CIMKeyBinding::STRING));
    cache.setKeyBindings(keys);
    Array<CIMParamValue> out;
    try
    {
        cimom.invokeMethod(context, "root/PG_Internal", cache, "Refresh", Array<CIMParamValue>(), out);
    }
    catch (const CIMException& e)
    {
        // A server without the array's providers has no cache to refresh.
        if (e.getCode() == CIM_ERR_INVALID_NAMESPACE || e.getCode() == CIM_ERR_INVALID_CLASS)
            return;
        log_message(2, "ZDA_SimulatorControlProvider: the providers' cache was not refreshed: %s",
            (const char*)e.getMessage().getCString());
    }
}

class SimulatorControlProvider : public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle& cimom) override { _cimom = cimom; }
    void terminate() override { delete this; }

    void invokeMethod(const OperationContext& context, const CIMObjectPath&, const CIMName& method,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler) override
    {
        const String user = context.contains(IdentityContainer::NAME)
            ? IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()
            : String();
        if (!zdasim_user_may_control(static_cast<const char*>(user.getCString())))
            throw CIMAccessDeniedException("User " + user + " may not use the simulator controls");
        Arguments in(inParameters);
        Uint32 result = 0;
        char error[2048] = "";
        handler.processing();

        if (method.equal("LoadDemo"))
        {
            zdasim_reset_demo_array();
            refreshProviderCaches(_cimom, context);
        }
        else if (method.equal("LoadDescription"))
        {
            std::string text = in.text("Description");
            result = zdasim_load_description_text(text.c_str(), "Description", error, sizeof error) == 0 ? 0
                                                                                                         : 1;
            if (result == 0)
                refreshProviderCaches(_cimom, context);
            handler.deliverParamValue(CIMParamValue("Error", CIMValue(String(error))));
        }
        else if (method.equal("Reset"))
        {
            // The real clock first: the demo array's times count from now.
            zdasim_clock_use_real();
            zdasim_faults_clear();
            zdasim_reset_demo_array();
            refreshProviderCaches(_cimom, context);
            zdasim_clear_records();
        }
        else if (method.equal("InjectFault"))
        {
            std::string function = in.text("Function");
            std::string text = in.text("Text");
            if (function.empty())
                throw CIMInvalidParameterException("InjectFault needs a Function");
            zdasim_fault_add(
                function.c_str(), in.get<Sint32>("Count", 1), in.get<Sint32>("Code", 1), text.c_str());
        }
        else if (method.equal("InjectSemaphoreTimeouts"))
        {
            zdasim_fault_sem_timeouts(in.get<Sint32>("Count", 1));
        }
        else if (method.equal("ClearFaults"))
        {
            zdasim_faults_clear();
        }
        else if (method.equal("SetClock"))
        {
            zdasim_clock_set(time_t(in.get<Sint64>("Start", 0)));
        }
        else if (method.equal("StepClock"))
        {
            zdasim_clock_advance(long(in.get<Sint64>("Seconds", 0)));
            handler.deliverParamValue(CIMParamValue("Now", CIMValue(Sint64(zdasim_clock_now()))));
        }
        else if (method.equal("UseRealClock"))
        {
            zdasim_clock_use_real();
        }
        else if (method.equal("GetLedgers"))
        {
            char report[4096] = "";
            zdasim_ledger_report(report, sizeof report);
            zdasim_sem_ledger_t sem{};
            zdasim_sem_ledger(&sem);
            handler.deliverParamValue(CIMParamValue("Outstanding", CIMValue(String(report))));
            handler.deliverParamValue(
                CIMParamValue("OutstandingCount", CIMValue(Sint64(zdasim_ledger_outstanding(nullptr)))));
            handler.deliverParamValue(
                CIMParamValue("BadReleases", CIMValue(Sint64(zdasim_ledger_bad_releases()))));
            handler.deliverParamValue(CIMParamValue("SemaphoreHeld", CIMValue(Boolean(sem.held != 0))));
            handler.deliverParamValue(
                CIMParamValue("UnbalancedPosts", CIMValue(Sint64(sem.unbalancedPosts))));
            handler.deliverParamValue(CIMParamValue("UnguardedCalls", CIMValue(Sint64(sem.unguardedCalls))));
            handler.deliverParamValue(CIMParamValue("SemaphoreTimeouts", CIMValue(Sint64(sem.timeouts))));
        }
        else if (method.equal("GetJournal"))
        {
            Array<String> entries;
            char line[2048];
            for (size_t i = 0; zdasim_journal_entry(i, line, sizeof line) == 0; i++)
                entries.append(String(line));
            handler.deliverParamValue(CIMParamValue("Entries", CIMValue(entries)));
        }
        else if (method.equal("ClearJournal"))
        {
            zdasim_journal_clear();
        }
        else
        {
            throw CIMMethodNotFoundException(method.getString());
        }
        handler.deliver(CIMValue(result));
        handler.complete();
    }

private:
    CIMOMHandle _cimom;
};

}  // namespace

PEGASUS_NAMESPACE_BEGIN
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& name)
{
    if (String::equalNoCase(name, "ZDA_SimulatorControlProvider"))
        return new SimulatorControlProvider;
    return 0;
}
PEGASUS_NAMESPACE_END
