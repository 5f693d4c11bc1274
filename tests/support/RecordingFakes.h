// Recording fakes of the host side of the SDK, for tests: a CIMOMHandle
// backend and a CIMClient transport that note each call as one line,
// "<operation> <argument> ...", and answer with empty results (a class or
// instance of the requested class, empty arrays, a null value) unless a
// test gave answers (CannedAnswers).
//
// Arguments are written with zda_test::text() except strings, which are
// quoted ("" for an empty one). A test that needs other answers derives,
// overrides the operation and calls the base version to keep the record.
#ifndef ZDA_TESTS_RECORDING_FAKES_H
#define ZDA_TESTS_RECORDING_FAKES_H

#include <Pegasus/Client/CIMClientTransport.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include "SdkText.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zda_test
{

using namespace Pegasus;

namespace recording
{

// Strings are quoted so that empty ones stay visible; classes and instances
// are written as their class name, a null value as "null", parameters as
// their names in order: "(A,B)".
std::string arg(const String& s);
std::string arg(const CIMClass& c);
std::string arg(const CIMInstance& i);
std::string arg(const CIMValue& v);
std::string arg(const Array<CIMParamValue>& parameters);

template <class T>
std::string arg(const T& value)
{
    return text(value);
}

template <class... Args>
std::string line(const char* operation, const Args&... args)
{
    std::string result = operation;
    ((result += " " + arg(args)), ...);
    return result;
}

}  // namespace recording

// What both fakes answer once a test set it: enumerateInstanceNames returns
// instanceNames; invokeMethod appends outParameters and returns returnValue.
// Set before the fake is used: the answers are read without a lock.
struct CannedAnswers
{
    Array<CIMObjectPath> instanceNames;
    Array<CIMParamValue> outParameters;
    CIMValue returnValue;

    CIMValue answerMethod(Array<CIMParamValue>& out) const
    {
        out.appendArray(outParameters);
        return returnValue;
    }
};

// Thread-safe: may be called from many threads and re-entrantly.
class RecordingCIMOMBackend : public CIMOMHandleBackend, public CannedAnswers
{
public:
    struct Call
    {
        std::string call;
        std::string user;  // zda_test::userOf() of the context received
    };

    std::vector<Call> calls() const;
    Call lastCall() const;

    CIMClass getClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn, Boolean lo,
        Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return noted(CIMClass(cn), c, "getClass", ns, cn, lo, iq, ico, pl);
    }
    Array<CIMClass> enumerateClasses(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn,
        Boolean di, Boolean lo, Boolean iq, Boolean ico) override
    {
        return noted(Array<CIMClass>(), c, "enumerateClasses", ns, cn, di, lo, iq, ico);
    }
    Array<CIMName> enumerateClassNames(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn, Boolean di) override
    {
        return noted(Array<CIMName>(), c, "enumerateClassNames", ns, cn, di);
    }
    void createClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMClass& cls) override
    {
        note(c, recording::line("createClass", ns, cls));
    }
    void modifyClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMClass& cls) override
    {
        note(c, recording::line("modifyClass", ns, cls));
    }
    void deleteClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn) override
    {
        note(c, recording::line("deleteClass", ns, cn));
    }
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        note(c, recording::line("getInstance", ns, path, lo, iq, ico, pl));
        CIMInstance instance(path.getClassName());
        instance.setPath(path);
        return instance;
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        return noted(Array<CIMInstance>(), c, "enumerateInstances", ns, cn, di, lo, iq, ico, pl);
    }
    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn) override
    {
        return noted(instanceNames, c, "enumerateInstanceNames", ns, cn);
    }
    CIMObjectPath createInstance(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& instance) override
    {
        return noted(CIMObjectPath(), c, "createInstance", ns, instance);
    }
    void modifyInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& instance,
        Boolean iq, const CIMPropertyList& pl) override
    {
        note(c, recording::line("modifyInstance", ns, instance, iq, pl));
    }
    void deleteInstance(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path) override
    {
        note(c, recording::line("deleteInstance", ns, path));
    }
    Array<CIMObject> execQuery(const OperationContext& c, const CIMNamespaceName& ns, const String& language,
        const String& query) override
    {
        return noted(Array<CIMObject>(), c, "execQuery", ns, language, query);
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& assoc, const CIMName& result, const String& role,
        const String& resultRole, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return noted(
            Array<CIMObject>(), c, "associators", ns, path, assoc, result, role, resultRole, iq, ico, pl);
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& assoc, const CIMName& result, const String& role,
        const String& resultRole) override
    {
        return noted(Array<CIMObjectPath>(), c, "associatorNames", ns, path, assoc, result, role, resultRole);
    }
    Array<CIMObject> references(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& result, const String& role, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        return noted(Array<CIMObject>(), c, "references", ns, path, result, role, iq, ico, pl);
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& result, const String& role) override
    {
        return noted(Array<CIMObjectPath>(), c, "referenceNames", ns, path, result, role);
    }
    CIMValue getProperty(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& property) override
    {
        return noted(CIMValue(), c, "getProperty", ns, path, property);
    }
    void setProperty(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& property, const CIMValue& value) override
    {
        note(c, recording::line("setProperty", ns, path, property, value));
    }
    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        return noted(answerMethod(out), c, "invokeMethod", ns, path, method, in);
    }
    // Not recorded: it is no operation of its own.
    OperationContext getResponseContext() override { return OperationContext(); }

private:
    void note(const OperationContext& context, std::string call);

    // Notes the call and gives answer back.
    template <class R, class... Args>
    R noted(R answer, const OperationContext& c, const char* operation, const Args&... args)
    {
        note(c, recording::line(operation, args...));
        return answer;
    }

    mutable std::mutex _mutex;
    std::vector<Call> _calls;
};

// Notes into a log that the test shares, so the record outlives the
// transport the client destroys on disconnect ("closed"). setTimeout is
// noted as "setTimeout <ms>".
class RecordingClientTransport : public CIMClientTransport, public CannedAnswers
{
public:
    typedef std::shared_ptr<std::vector<std::string>> Log;

    explicit RecordingClientTransport(Log log) : _log(std::move(log)) {}
    ~RecordingClientTransport() override { _log->push_back("closed"); }

    void setTimeout(Uint32 ms) override { _log->push_back("setTimeout " + std::to_string(ms)); }
    CIMClass getClass(const CIMNamespaceName& ns, const CIMName& cn, Boolean lo, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        return noted(CIMClass(cn), "getClass", ns, cn, lo, iq, ico, pl);
    }
    Array<CIMClass> enumerateClasses(const CIMNamespaceName& ns, const CIMName& cn, Boolean di, Boolean lo,
        Boolean iq, Boolean ico) override
    {
        return noted(Array<CIMClass>(), "enumerateClasses", ns, cn, di, lo, iq, ico);
    }
    Array<CIMName> enumerateClassNames(const CIMNamespaceName& ns, const CIMName& cn, Boolean di) override
    {
        return noted(Array<CIMName>(), "enumerateClassNames", ns, cn, di);
    }
    void createClass(const CIMNamespaceName& ns, const CIMClass& c) override
    {
        _log->push_back(recording::line("createClass", ns, c));
    }
    void modifyClass(const CIMNamespaceName& ns, const CIMClass& c) override
    {
        _log->push_back(recording::line("modifyClass", ns, c));
    }
    void deleteClass(const CIMNamespaceName& ns, const CIMName& cn) override
    {
        _log->push_back(recording::line("deleteClass", ns, cn));
    }
    CIMInstance getInstance(const CIMNamespaceName& ns, const CIMObjectPath& p, Boolean lo, Boolean iq,
        Boolean ico, const CIMPropertyList& pl) override
    {
        return noted(CIMInstance(p.getClassName()), "getInstance", ns, p, lo, iq, ico, pl);
    }
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& ns, const CIMName& cn, Boolean di,
        Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return noted(Array<CIMInstance>(), "enumerateInstances", ns, cn, di, lo, iq, ico, pl);
    }
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& cn) override
    {
        return noted(instanceNames, "enumerateInstanceNames", ns, cn);
    }
    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& i) override
    {
        return noted(CIMObjectPath(), "createInstance", ns, i);
    }
    void modifyInstance(
        const CIMNamespaceName& ns, const CIMInstance& i, Boolean iq, const CIMPropertyList& pl) override
    {
        _log->push_back(recording::line("modifyInstance", ns, i, iq, pl));
    }
    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& p) override
    {
        _log->push_back(recording::line("deleteInstance", ns, p));
    }
    Array<CIMObject> execQuery(
        const CIMNamespaceName& ns, const String& language, const String& query) override
    {
        return noted(Array<CIMObject>(), "execQuery", ns, language, query);
    }
    Array<CIMObject> associators(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& assoc,
        const CIMName& result, const String& role, const String& resultRole, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        return noted(Array<CIMObject>(), "associators", ns, p, assoc, result, role, resultRole, iq, ico, pl);
    }
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName& assoc, const CIMName& result, const String& role, const String& resultRole) override
    {
        return noted(Array<CIMObjectPath>(), "associatorNames", ns, p, assoc, result, role, resultRole);
    }
    Array<CIMObject> references(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& result,
        const String& role, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return noted(Array<CIMObject>(), "references", ns, p, result, role, iq, ico, pl);
    }
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName& result, const String& role) override
    {
        return noted(Array<CIMObjectPath>(), "referenceNames", ns, p, result, role);
    }
    CIMValue getProperty(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& property) override
    {
        return noted(CIMValue(), "getProperty", ns, p, property);
    }
    void setProperty(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& property,
        const CIMValue& value) override
    {
        _log->push_back(recording::line("setProperty", ns, p, property, value));
    }
    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        return noted(answerMethod(out), "invokeMethod", ns, p, method, in);
    }

private:
    // Notes the call and gives answer back.
    template <class R, class... Args>
    R noted(R answer, const char* operation, const Args&... args)
    {
        _log->push_back(recording::line(operation, args...));
        return answer;
    }

    Log _log;
};

}  // namespace zda_test

#endif
