// What the copy services, synchronization and pool providers of this
// library share: reading volumes from the array.
#ifndef ZDA_COPY_SERVICES_COMMON_H
#define ZDA_COPY_SERVICES_COMMON_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>

#include "ZDA_CompanionFrame.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_CopyServices
{

extern const char NAMESPACE[];     // "root/zda"
extern const char VOLUME_CLASS[];  // "ZDA_StorageVolume"
extern const char SYNC_CLASS[];    // "ZDA_StorageSynchronized"

using ZDA_CompanionFrame::systemIdentity;

// Every volume of the array, in id order, into `volumes`. Returns the
// array's code (0, or the semaphore's time-out); the list is empty on failure.
int readAllVolumes(ZDA_CompanionFrame::ArrayList<api_VVObj_t>& volumes);

// The one volume whose WWN text is `wwn` or whose name is `name` (the
// other null). Returns 0 and fills `volume`, or the array's code
// (API_E_NOT_FOUND for none).
int readVolume(const char* name, const char* wwn, api_VVObj_t& volume);

// A copy of `path` in root/zda when it has no namespace.
CIMObjectPath inNamespace(const CIMObjectPath& path);

}  // namespace ZDA_CopyServices

PEGASUS_NAMESPACE_END

#endif
