// Turns a resolved schema into object-model objects.
#ifndef ZDA_SERVER_SCHEMA_OBJECTS_H
#define ZDA_SERVER_SCHEMA_OBJECTS_H

#include "MofSchema.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMValue.h>

#include <string>

namespace zda::server
{

Pegasus::String toString(const std::string& utf8);
std::string toUtf8(const Pegasus::String& s);

// A value of the given type from a literal that resolution accepted for it.
// Throws mof::MofError at the literal when the object model refuses it (an
// impossible date-time such as month 13, a malformed object path).
Pegasus::CIMValue toValue(
    const mof::Literal& literal, mof::DataType type, bool isArray, std::uint32_t arraySize);

Pegasus::CIMQualifierDecl toQualifierDecl(const mof::QualifierDeclaration& decl);

// The full class: every property and method with class origin and the
// propagated flag, and every qualifier. Throws mof::MofError.
Pegasus::CIMClass toClass(const mof::ResolvedClass& cls);

// An instance of `cls` with its path (keys and namespace, no host).
// Throws mof::MofError.
Pegasus::CIMInstance toInstance(const mof::ResolvedInstance& instance,
    const mof::ResolvedClass& resolvedClass, const Pegasus::CIMClass& cls, const std::string& nameSpace);

}  // namespace zda::server

#endif
