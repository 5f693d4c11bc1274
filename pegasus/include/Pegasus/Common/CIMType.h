// The data types of CIM values.
#ifndef Pegasus_CIMType_h
#define Pegasus_CIMType_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

enum CIMType
{
    CIMTYPE_BOOLEAN,    // 0
    CIMTYPE_UINT8,      // 1
    CIMTYPE_SINT8,      // 2
    CIMTYPE_UINT16,     // 3
    CIMTYPE_SINT16,     // 4
    CIMTYPE_UINT32,     // 5
    CIMTYPE_SINT32,     // 6
    CIMTYPE_UINT64,     // 7
    CIMTYPE_SINT64,     // 8
    CIMTYPE_REAL32,     // 9
    CIMTYPE_REAL64,     // 10
    CIMTYPE_CHAR16,     // 11
    CIMTYPE_STRING,     // 12
    CIMTYPE_DATETIME,   // 13
    CIMTYPE_REFERENCE,  // 14
    CIMTYPE_OBJECT,     // 15
    CIMTYPE_INSTANCE    // 16
};

// The MOF name of the type ("uint32", "datetime", ...), or "unknown".
PEGASUS_COMMON_LINKAGE const char* cimTypeToString(const CIMType type);

PEGASUS_NAMESPACE_END

#endif
