// The array's background tasks as ZDA_ConcreteJob instances.
#include "ZDA_ConcreteJobProvider.h"

#include <cstdlib>
#include <cstring>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::ArrayList;
using ZDA_CompanionFrame::callUnderSemaphore;

namespace
{

const String ClassName = "ZDA_ConcreteJob";
const char SOURCE_FILE[] = "ZDA_ConcreteJobProvider";
const char JOB_NAMESPACE[] = "root/zda";
const char ID_PREFIX[] = "KX_ORLA:";

// CIM_ConcreteJob.JobState values.
const Uint16 JOB_RUNNING = 4;
const Uint16 JOB_COMPLETED = 7;
const Uint16 JOB_TERMINATED = 8;
const Uint16 JOB_EXCEPTION = 10;
// OperationalStatus values.
const Uint16 STATUS_OK = 2;
const Uint16 STATUS_ERROR = 6;
const Uint16 STATUS_STOPPED = 10;
const Uint16 STATUS_COMPLETED = 17;
// CIM_Error values for a failed task.
const Uint16 ERROR_TYPE_OTHER = 1;
const Uint16 SEVERITY_MAJOR = 6;
const Uint16 CIM_STATUS_FAILED = 1;

const char* taskKind(int type)
{
    switch (type)
    {
    case API_TASK_PHYSICAL_COPY: return "Physical copy";
    case API_TASK_COPY_RESTORE: return "Copy restore";
    case API_TASK_RCOPY_SYNC: return "Remote copy synchronization";
    default: return "Array task";
    }
}

bool readTasks(ArrayList<api_task_t>& tasks)
{
    const int rc = callUnderSemaphore([&] { return api_getTasks(tasks.count(), tasks.out()); });
    if (rc != 0)
    {
        tasks.reset();
        log_message(2, "ZDA_ConcreteJobProvider: api_getTasks error (%d)\n", rc);
        return false;
    }
    return true;
}

CIMDateTime interval(time_t seconds)
{
    return CIMDateTime(Uint64(seconds < 0 ? 0 : seconds) * 1000000, true);
}

}  // namespace

ZDA_ConcreteJobProvider::ZDA_ConcreteJobProvider() = default;
ZDA_ConcreteJobProvider::~ZDA_ConcreteJobProvider() = default;

String ZDA_ConcreteJobProvider::makeUniqueID(Uint32 taskId)
{
    char id[32];
    snprintf(id, sizeof id, "%s%u", ID_PREFIX, taskId);
    return String(id);
}

Uint32 ZDA_ConcreteJobProvider::taskIdOf(const String& instanceID)
{
    const CString text = instanceID.getCString();
    const char* s = text;
    const size_t prefix = strlen(ID_PREFIX);
    if (strncmp(s, ID_PREFIX, prefix) != 0 || s[prefix] < '1' || s[prefix] > '9')
        return 0;
    char* end = nullptr;
    const unsigned long long tid = strtoull(s + prefix, &end, 10);
    return (*end == '\0' && tid <= 0xFFFFFFFFull) ? Uint32(tid) : 0;
}

CIMObjectPath ZDA_ConcreteJobProvider::buildObjectPath(const String& host, const String& id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", id, CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName(JOB_NAMESPACE), CIMName(ClassName), keys);
}

CIMInstance ZDA_ConcreteJobProvider::buildInstance(
    const api_task_t& task, const String& host, CIMClass& jobClass)
{
    CIMInstance job = ZDA_Common::buildInstanceSkeleton(jobClass);
    const String id = makeUniqueID(task.tid);
    const String object = task.name;
    ZDA_Common::setPropertyValue(job, "InstanceID", id);
    ZDA_Common::setPropertyValue(job, "Name", taskKind(task.type));
    ZDA_Common::setPropertyValue(job, "ElementName", object);
    ZDA_Common::setPropertyValue(job, "Caption", String(taskKind(task.type)) + " " + object);
    ZDA_Common::setPropertyValue(job, "Description",
        String(taskKind(task.type)) + " of " + object + " (array task " +
            String(id.subString(strlen(ID_PREFIX))) + ")");
    ZDA_Common::setPropertyValue(job, "Owner", String(task.user));
    ZDA_Common::setPropertyValue(job, "PercentComplete", Uint16(task.percentDone));
    ZDA_Common::setPropertyValue(job, "DeleteOnCompletion", Boolean(false));
    ZDA_Common::setPropertyValue(job, "TimeSubmitted", ZDA_Common::getCIMDateTime(task.startTime));
    ZDA_Common::setPropertyValue(job, "StartTime", ZDA_Common::getCIMDateTime(task.startTime));
    const bool active = task.state == API_TASK_ACTIVE;
    ZDA_Common::setPropertyValue(
        job, "ElapsedTime", interval((active ? task.asOf : task.endTime) - task.startTime));
    ZDA_Common::setPropertyValue(
        job, "TimeOfLastStateChange", ZDA_Common::getCIMDateTime(active ? task.startTime : task.endTime));

    Uint16 jobState = JOB_RUNNING;
    String jobStatus = "Running";
    Array<Uint16> status;
    switch (task.state)
    {
    case API_TASK_DONE:
        jobState = JOB_COMPLETED;
        jobStatus = "Completed";
        status.append(STATUS_OK);
        status.append(STATUS_COMPLETED);
        break;
    case API_TASK_FAILED:
        jobState = JOB_EXCEPTION;
        jobStatus = String("Failed: ") + task.detail;
        status.append(STATUS_ERROR);
        status.append(STATUS_COMPLETED);
        ZDA_Common::setPropertyValue(job, "ErrorCode", Uint16(1));
        ZDA_Common::setPropertyValue(job, "ErrorDescription", String(task.detail));
        break;
    case API_TASK_CANCELLED:
        jobState = JOB_TERMINATED;
        jobStatus = String("Stopped: ") + task.detail;
        status.append(STATUS_STOPPED);
        status.append(STATUS_COMPLETED);
        break;
    default: status.append(STATUS_OK); break;
    }
    ZDA_Common::setPropertyValue(job, "JobState", jobState);
    ZDA_Common::setPropertyValue(job, "JobStatus", jobStatus);
    ZDA_Common::setPropertyValue(job, "OperationalStatus", status);
    job.setPath(buildObjectPath(host, id));
    return job;
}

void ZDA_ConcreteJobProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_ConcreteJobProvider::terminate()
{
    delete this;
}

bool ZDA_ConcreteJobProvider::_findTask(const CIMObjectPath& reference, api_task_t& task)
{
    const Uint32 tid = taskIdOf(ZDA_Common::getStringProperty(reference, "InstanceID"));
    if (tid == 0 || reference.getKeyBindings().size() != 1)
        return false;
    ArrayList<api_task_t> tasks;
    if (!readTasks(tasks))
        return false;
    for (const api_task_t& t : tasks)
    {
        if (t.tid == tid)
        {
            task = t;
            return true;
        }
    }
    return false;
}

void ZDA_ConcreteJobProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ConcreteJobProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_ConcreteJob");
    CIMClass jobClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), JOB_NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    api_task_t task;
    String systemName, host;
    if (!ZDA_CompanionFrame::systemIdentity(SOURCE_FILE, systemName, host) ||
        !_findTask(instanceReference, task))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(buildInstance(task, host, jobClass));
    handler.complete();
    log_message(4, "<-- ZDA_ConcreteJobProvider::getInstance()\n");
}

void ZDA_ConcreteJobProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ConcreteJobProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_ConcreteJob");
    CIMClass jobClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), JOB_NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    String systemName, host;
    ArrayList<api_task_t> tasks;
    if (ZDA_CompanionFrame::systemIdentity(SOURCE_FILE, systemName, host) && readTasks(tasks))
        for (const api_task_t& t : tasks)
            handler.deliver(buildInstance(t, host, jobClass));
    handler.complete();
    log_message(4, "<-- ZDA_ConcreteJobProvider::enumerateInstances()\n");
}

void ZDA_ConcreteJobProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ConcreteJobProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_ConcreteJob");
    handler.processing();
    String systemName, host;
    ArrayList<api_task_t> tasks;
    if (ZDA_CompanionFrame::systemIdentity(SOURCE_FILE, systemName, host) && readTasks(tasks))
    {
        for (const api_task_t& t : tasks)
            handler.deliver(buildObjectPath(host, makeUniqueID(t.tid)));
    }
    handler.complete();
    log_message(4, "<-- ZDA_ConcreteJobProvider::enumerateInstanceNames()\n");
}

void ZDA_ConcreteJobProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_ConcreteJobProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_ConcreteJobProvider::deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_ConcreteJobProvider::invokeMethod(const OperationContext& context,
    const CIMObjectPath& objectReference, const CIMName& methodName, const Array<CIMParamValue>&,
    MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ConcreteJobProvider::invokeMethod()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(objectReference, ClassName, "CIM_ConcreteJob");
    if (!methodName.equal("GetError"))
        throw CIMMethodNotFoundException(ClassName + " has no method " + methodName.getString());
    api_task_t task;
    if (!_findTask(objectReference, task))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    CIMValue error(CIMTYPE_INSTANCE, false);
    if (task.state == API_TASK_FAILED)
    {
        CIMInstance cimError("CIM_Error");
        cimError.addProperty(CIMProperty("ErrorType", CIMValue(ERROR_TYPE_OTHER)));
        cimError.addProperty(CIMProperty("OtherErrorType", CIMValue(String("Array task failure"))));
        cimError.addProperty(CIMProperty("OwningEntity", CIMValue(String("ZDA"))));
        cimError.addProperty(CIMProperty("Message", CIMValue(String(task.detail))));
        cimError.addProperty(CIMProperty("PerceivedSeverity", CIMValue(SEVERITY_MAJOR)));
        cimError.addProperty(CIMProperty("CIMStatusCode", CIMValue(CIM_STATUS_FAILED)));
        cimError.addProperty(CIMProperty("ErrorSource", CIMValue(makeUniqueID(task.tid))));
        error = CIMValue(cimError);
    }
    handler.processing();
    handler.deliverParamValue(CIMParamValue("Error", error));
    handler.deliver(CIMValue(Uint32(0)));
    handler.complete();
    log_message(4, "<-- ZDA_ConcreteJobProvider::invokeMethod()\n");
}

PEGASUS_NAMESPACE_END
