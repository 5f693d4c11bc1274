// ZDA_ConcreteJobProvider: the array's background tasks (physical copies,
// restores of copies, remote copy synchronisations) as ZDA_ConcreteJob
// instances in root/zda, with the extrinsic method GetError.
//
// A job's one key, InstanceID, is makeUniqueID(task id): "KX_ORLA:" and the
// task id in decimal. Its state, progress, status, times and error follow
// the task as the array reports it, so a job read again after the array's
// clock moved shows the task's new state. docs/shared-keys.md has the values.
//
// The static builders are the one source of a job's path; the copy
// services and the replication module call them. Every operation opens the
// array for the caller; array calls hold the semaphore for the call only.
// A failed or busy read gives an empty answer, and not found for
// getInstance. Jobs cannot be created, modified or deleted by clients. May
// be called on any number of threads.
#ifndef ZDA_CONCRETE_JOB_PROVIDER_H
#define ZDA_CONCRETE_JOB_PROVIDER_H

#include <ctime>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_ConcreteJobProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_ConcreteJobProvider();
    virtual ~ZDA_ConcreteJobProvider();

    // The job identifier of the task `taskId`: "KX_ORLA:<taskId>".
    static String makeUniqueID(Uint32 taskId);
    // The task id an identifier of makeUniqueID names; 0 for any other text.
    static Uint32 taskIdOf(const String& instanceID);
    // The path of the job `id` (from makeUniqueID): host `host`, namespace
    // root/zda, class ZDA_ConcreteJob, key InstanceID.
    static CIMObjectPath buildObjectPath(const String& host, const String& id);
    // The job of `task` on the skeleton of `jobClass`, with the path on
    // `host`. An active task's elapsed time runs to the array's time at
    // which the task was read (`asOf`), so it follows the array's clock.
    static CIMInstance buildInstance(const api_task_t& task, const String& host, CIMClass& jobClass);

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

    // GetError: 0 with the output Error, an embedded CIM_Error instance
    // describing why the task failed (a null Error for a task that did not
    // fail). CIMObjectNotFoundException for a job the array does not know,
    // CIMMethodNotFoundException for another method.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    // The task the job path names, read from the array: true when found.
    bool _findTask(const CIMObjectPath& reference, api_task_t& task);

    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
