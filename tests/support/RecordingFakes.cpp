#include "RecordingFakes.h"
#include "SdkText.h"

namespace zda_test
{

namespace
{

// Strings are quoted so that empty ones stay visible.
std::string arg(const String& s)
{
    return "\"" + text(s) + "\"";
}

std::string arg(const CIMClass& c)
{
    return text(c.getClassName());
}

std::string arg(const CIMInstance& i)
{
    return text(i.getClassName());
}

std::string arg(const CIMValue& v)
{
    return v.isNull() ? "null" : text(v.toString());
}

// Parameter names in order: "(A,B)".
std::string arg(const Array<CIMParamValue>& parameters)
{
    std::string names = "(";
    for (Uint32 i = 0; i < parameters.size(); i++)
        names += (i ? "," : "") + text(parameters[i].getParameterName());
    return names + ")";
}

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

}  // namespace

// RecordingCIMOMBackend

void RecordingCIMOMBackend::note(const OperationContext& context, std::string call)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _calls.push_back(Call{std::move(call), userOf(context)});
}

std::vector<RecordingCIMOMBackend::Call> RecordingCIMOMBackend::calls() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls;
}

RecordingCIMOMBackend::Call RecordingCIMOMBackend::lastCall() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls.empty() ? Call{"<no call>", ""} : _calls.back();
}

CIMClass RecordingCIMOMBackend::getClass(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMName& cn, Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    note(c, line("getClass", ns, cn, lo, iq, ico, pl));
    return CIMClass(cn);
}

Array<CIMClass> RecordingCIMOMBackend::enumerateClasses(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico)
{
    note(c, line("enumerateClasses", ns, cn, di, lo, iq, ico));
    return Array<CIMClass>();
}

Array<CIMName> RecordingCIMOMBackend::enumerateClassNames(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn, Boolean di)
{
    note(c, line("enumerateClassNames", ns, cn, di));
    return Array<CIMName>();
}

void RecordingCIMOMBackend::createClass(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMClass& cls)
{
    note(c, line("createClass", ns, cls));
}

void RecordingCIMOMBackend::modifyClass(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMClass& cls)
{
    note(c, line("modifyClass", ns, cls));
}

void RecordingCIMOMBackend::deleteClass(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn)
{
    note(c, line("deleteClass", ns, cn));
}

CIMInstance RecordingCIMOMBackend::getInstance(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMObjectPath& path, Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    note(c, line("getInstance", ns, path, lo, iq, ico, pl));
    CIMInstance instance(path.getClassName());
    instance.setPath(path);
    return instance;
}

Array<CIMInstance> RecordingCIMOMBackend::enumerateInstances(const OperationContext& c,
    const CIMNamespaceName& ns, const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico,
    const CIMPropertyList& pl)
{
    note(c, line("enumerateInstances", ns, cn, di, lo, iq, ico, pl));
    return Array<CIMInstance>();
}

Array<CIMObjectPath> RecordingCIMOMBackend::enumerateInstanceNames(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn)
{
    note(c, line("enumerateInstanceNames", ns, cn));
    return Array<CIMObjectPath>();
}

CIMObjectPath RecordingCIMOMBackend::createInstance(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& instance)
{
    note(c, line("createInstance", ns, instance));
    return CIMObjectPath();
}

void RecordingCIMOMBackend::modifyInstance(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMInstance& instance, Boolean iq, const CIMPropertyList& pl)
{
    note(c, line("modifyInstance", ns, instance, iq, pl));
}

void RecordingCIMOMBackend::deleteInstance(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path)
{
    note(c, line("deleteInstance", ns, path));
}

Array<CIMObject> RecordingCIMOMBackend::execQuery(
    const OperationContext& c, const CIMNamespaceName& ns, const String& language, const String& query)
{
    note(c, line("execQuery", ns, language, query));
    return Array<CIMObject>();
}

Array<CIMObject> RecordingCIMOMBackend::associators(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMObjectPath& path, const CIMName& assoc, const CIMName& result, const String& role,
    const String& resultRole, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    note(c, line("associators", ns, path, assoc, result, role, resultRole, iq, ico, pl));
    return Array<CIMObject>();
}

Array<CIMObjectPath> RecordingCIMOMBackend::associatorNames(const OperationContext& c,
    const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& assoc, const CIMName& result,
    const String& role, const String& resultRole)
{
    note(c, line("associatorNames", ns, path, assoc, result, role, resultRole));
    return Array<CIMObjectPath>();
}

Array<CIMObject> RecordingCIMOMBackend::references(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMObjectPath& path, const CIMName& result, const String& role, Boolean iq, Boolean ico,
    const CIMPropertyList& pl)
{
    note(c, line("references", ns, path, result, role, iq, ico, pl));
    return Array<CIMObject>();
}

Array<CIMObjectPath> RecordingCIMOMBackend::referenceNames(const OperationContext& c,
    const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& result, const String& role)
{
    note(c, line("referenceNames", ns, path, result, role));
    return Array<CIMObjectPath>();
}

CIMValue RecordingCIMOMBackend::getProperty(
    const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& property)
{
    note(c, line("getProperty", ns, path, property));
    return CIMValue();
}

void RecordingCIMOMBackend::setProperty(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMObjectPath& path, const CIMName& property, const CIMValue& value)
{
    note(c, line("setProperty", ns, path, property, value));
}

CIMValue RecordingCIMOMBackend::invokeMethod(const OperationContext& c, const CIMNamespaceName& ns,
    const CIMObjectPath& path, const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>&)
{
    note(c, line("invokeMethod", ns, path, method, in));
    return CIMValue();
}

OperationContext RecordingCIMOMBackend::getResponseContext()
{
    return OperationContext();
}

// RecordingClientTransport

RecordingClientTransport::~RecordingClientTransport()
{
    _log->push_back("closed");
}

void RecordingClientTransport::setTimeout(Uint32 ms)
{
    _log->push_back("setTimeout " + std::to_string(ms));
}

CIMClass RecordingClientTransport::getClass(const CIMNamespaceName& ns, const CIMName& cn, Boolean lo,
    Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    _log->push_back(line("getClass", ns, cn, lo, iq, ico, pl));
    return CIMClass(cn);
}

Array<CIMClass> RecordingClientTransport::enumerateClasses(
    const CIMNamespaceName& ns, const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico)
{
    _log->push_back(line("enumerateClasses", ns, cn, di, lo, iq, ico));
    return Array<CIMClass>();
}

Array<CIMName> RecordingClientTransport::enumerateClassNames(
    const CIMNamespaceName& ns, const CIMName& cn, Boolean di)
{
    _log->push_back(line("enumerateClassNames", ns, cn, di));
    return Array<CIMName>();
}

void RecordingClientTransport::createClass(const CIMNamespaceName& ns, const CIMClass& c)
{
    _log->push_back(line("createClass", ns, c));
}

void RecordingClientTransport::modifyClass(const CIMNamespaceName& ns, const CIMClass& c)
{
    _log->push_back(line("modifyClass", ns, c));
}

void RecordingClientTransport::deleteClass(const CIMNamespaceName& ns, const CIMName& cn)
{
    _log->push_back(line("deleteClass", ns, cn));
}

CIMInstance RecordingClientTransport::getInstance(const CIMNamespaceName& ns, const CIMObjectPath& p,
    Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    _log->push_back(line("getInstance", ns, p, lo, iq, ico, pl));
    return CIMInstance(p.getClassName());
}

Array<CIMInstance> RecordingClientTransport::enumerateInstances(const CIMNamespaceName& ns, const CIMName& cn,
    Boolean di, Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    _log->push_back(line("enumerateInstances", ns, cn, di, lo, iq, ico, pl));
    return Array<CIMInstance>();
}

Array<CIMObjectPath> RecordingClientTransport::enumerateInstanceNames(
    const CIMNamespaceName& ns, const CIMName& cn)
{
    _log->push_back(line("enumerateInstanceNames", ns, cn));
    return Array<CIMObjectPath>();
}

CIMObjectPath RecordingClientTransport::createInstance(const CIMNamespaceName& ns, const CIMInstance& i)
{
    _log->push_back(line("createInstance", ns, i));
    return CIMObjectPath();
}

void RecordingClientTransport::modifyInstance(
    const CIMNamespaceName& ns, const CIMInstance& i, Boolean iq, const CIMPropertyList& pl)
{
    _log->push_back(line("modifyInstance", ns, i, iq, pl));
}

void RecordingClientTransport::deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& p)
{
    _log->push_back(line("deleteInstance", ns, p));
}

Array<CIMObject> RecordingClientTransport::execQuery(
    const CIMNamespaceName& ns, const String& language, const String& query)
{
    _log->push_back(line("execQuery", ns, language, query));
    return Array<CIMObject>();
}

Array<CIMObject> RecordingClientTransport::associators(const CIMNamespaceName& ns, const CIMObjectPath& p,
    const CIMName& assoc, const CIMName& result, const String& role, const String& resultRole, Boolean iq,
    Boolean ico, const CIMPropertyList& pl)
{
    _log->push_back(line("associators", ns, p, assoc, result, role, resultRole, iq, ico, pl));
    return Array<CIMObject>();
}

Array<CIMObjectPath> RecordingClientTransport::associatorNames(const CIMNamespaceName& ns,
    const CIMObjectPath& p, const CIMName& assoc, const CIMName& result, const String& role,
    const String& resultRole)
{
    _log->push_back(line("associatorNames", ns, p, assoc, result, role, resultRole));
    return Array<CIMObjectPath>();
}

Array<CIMObject> RecordingClientTransport::references(const CIMNamespaceName& ns, const CIMObjectPath& p,
    const CIMName& result, const String& role, Boolean iq, Boolean ico, const CIMPropertyList& pl)
{
    _log->push_back(line("references", ns, p, result, role, iq, ico, pl));
    return Array<CIMObject>();
}

Array<CIMObjectPath> RecordingClientTransport::referenceNames(
    const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& result, const String& role)
{
    _log->push_back(line("referenceNames", ns, p, result, role));
    return Array<CIMObjectPath>();
}

CIMValue RecordingClientTransport::getProperty(
    const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& property)
{
    _log->push_back(line("getProperty", ns, p, property));
    return CIMValue();
}

void RecordingClientTransport::setProperty(
    const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& property, const CIMValue& value)
{
    _log->push_back(line("setProperty", ns, p, property, value));
}

CIMValue RecordingClientTransport::invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& p,
    const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>&)
{
    _log->push_back(line("invokeMethod", ns, p, method, in));
    return CIMValue();
}

}  // namespace zda_test
