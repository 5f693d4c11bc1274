// The CIM-XML elements of values, paths and objects, written and read.
// Shared by the message layer (Messages.cpp) and the tests of the library.
#ifndef ZDA_CIMXML_ELEMENTS_H
#define ZDA_CIMXML_ELEMENTS_H

#include "XmlWriter.h"

#include <pugixml.hpp>

#include <cstring>

namespace cimxml
{

// Wire names of the types: "uint8" ... "datetime", "reference". Object and
// instance values travel as "string" with an embedded-object marker.
const char* wireTypeName(CIMType type);
// False for an unknown name. Accepts exactly the names wireTypeName writes.
bool parseWireType(const char* name, CIMType& type);

// ---- writing ----

// TYPE="..." (or PARAMTYPE) plus EmbeddedObject="object|instance" where the
// type calls for it.
void writeTypeAttributes(XmlWriter& w, const char* attributeName, CIMType type);
// VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for a null value.
void writeValue(XmlWriter& w, const CIMValue& value);
void writeLocalNamespacePath(XmlWriter& w, const CIMNamespaceName& nameSpace);
void writeInstanceName(XmlWriter& w, const CIMObjectPath& path);
// INSTANCEPATH or CLASSPATH (by whether the path has keys), host and
// namespace required.
void writeObjectPath(XmlWriter& w, const CIMObjectPath& path);
// LOCALINSTANCEPATH or LOCALCLASSPATH, for METHODCALL targets.
void writeLocalObjectPath(XmlWriter& w, const CIMNamespaceName& nameSpace, const CIMObjectPath& path);
void writeReference(XmlWriter& w, const CIMObjectPath& path);  // VALUE.REFERENCE
void writeInstance(XmlWriter& w, const CIMConstInstance& instance);
void writeClass(XmlWriter& w, const CIMConstClass& cimClass);
void writeObject(XmlWriter& w, const CIMConstObject& object);  // INSTANCE or CLASS
void writeNamedInstance(XmlWriter& w, const CIMConstInstance& instance);
// The same, named by `path` instead of the instance's own path.
void writeNamedInstance(XmlWriter& w, const CIMConstInstance& instance, const CIMObjectPath& path);
void writeObjectWithPath(XmlWriter& w, const CIMConstObject& object);

// ---- reading ----

// Element navigation that skips text, comments and processing instructions.
inline bool isElement(const pugi::xml_node& e, const char* name)
{
    return std::strcmp(e.name(), name) == 0;
}
pugi::xml_node firstElement(const pugi::xml_node& parent);  // or an empty node
pugi::xml_node nextElement(const pugi::xml_node& sibling);  // or an empty node

// Reading state: the limits and how deep in embedded objects we are.
struct ReadContext
{
    DecodeLimits limits;
    unsigned embedding = 0;
};

// Each reader takes the element it names and throws DecodeError(NotValid)
// saying what is wrong with it.
[[noreturn]] void invalid(const std::string& message);
String textOf(const pugi::xml_node& element);  // concatenated character data
String attrString(const pugi::xml_node& element, const char* name, bool required);
CIMName attrName(const pugi::xml_node& element, const char* name, bool required);
bool isEmbeddedObject(const pugi::xml_node& element, CIMType& embeddedType);

CIMNamespaceName readLocalNamespacePath(const pugi::xml_node& element);
// INSTANCENAME, returns a path with class and keys only.
CIMObjectPath readInstanceName(const pugi::xml_node& element, ReadContext& ctx);
// Any of CLASSPATH, LOCALCLASSPATH, CLASSNAME, INSTANCEPATH, LOCALINSTANCEPATH,
// INSTANCENAME, OBJECTPATH or VALUE.REFERENCE.
CIMObjectPath readAnyPath(const pugi::xml_node& element, ReadContext& ctx);
// A value of a known type: VALUE, VALUE.ARRAY, VALUE.REFERENCE,
// VALUE.REFARRAY or nothing (null); element may be empty (null value).
CIMValue readTypedValue(const pugi::xml_node& element, CIMType type, bool isArray, ReadContext& ctx);
// A value without a type: VALUE gives a String, VALUE.ARRAY an Array<String>,
// references are references. typed is set false for the strings.
CIMValue readUntypedValue(const pugi::xml_node& element, ReadContext& ctx, bool& typed);
CIMInstance readInstance(const pugi::xml_node& element, ReadContext& ctx);
CIMClass readClass(const pugi::xml_node& element, ReadContext& ctx);
CIMInstance readNamedInstance(const pugi::xml_node& element, ReadContext& ctx);
// VALUE.OBJECTWITHPATH, VALUE.OBJECTWITHLOCALPATH or VALUE.OBJECT.
CIMObject readObjectWithPath(const pugi::xml_node& element, ReadContext& ctx);
// Parses the text of an embedded object (an escaped INSTANCE or CLASS).
CIMObject readEmbeddedObject(const String& xml, ReadContext& ctx);

// Parses a document with the reader's safety rules: no document type, no
// entity declarations, depth and attribute sizes bounded. Throws DecodeError.
// With writableData (the same bytes as data) the parser works in that buffer
// instead of a copy; the buffer must then outlive doc.
void parseDocument(pugi::xml_document& doc, const char* data, std::size_t size, const DecodeLimits& limits,
    char* writableData = nullptr);

}  // namespace cimxml

#endif
