// ZDA_AffectedJobElementProvider: ZDA_AffectedJobElement in root/zda
// (answering also to CIM_AffectedJobElement), each job the array runs or
// remembers (AffectingElement) with what it acts on (AffectedElement): a
// physical copy with the copy it writes, a restore with the volume it
// writes back to, a remote copy synchronization with its group and the far
// group on the task's target. The far group is a replication entity ("RG"),
// or under the no-replication-entity policy a remote replication group of
// the far system. A task whose volume or group is gone has no pair. A group
// reference without a name in its InstanceID answers nothing; a failed read
// leaves the answer without complete().
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_AFFECTED_JOB_ELEMENT_PROVIDER_H
#define ZDA_AFFECTED_JOB_ELEMENT_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_AffectedJobElementProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the system's names.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_AffectedJobElementProvider)

    // Every pair, in the array's order of tasks; false when the tasks, the
    // remote copy configuration or a volume cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    String _systemName;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
