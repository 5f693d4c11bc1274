// The server's class repository: namespaces, qualifier declarations,
// classes with resolved inheritance, and the static instances declared in
// MOF. Built once at start-up from MOF; read-only afterwards.
//
// Thread safety: every member is const and may be called from any number of
// threads at once. Stored objects are never handed out: each call returns
// new objects (clones), which the caller owns and may change.
//
// Names (namespaces, classes, properties, roles) are compared without
// regard to ASCII case. Results keep the spelling of the MOF.
#ifndef ZDA_SERVER_CLASS_REPOSITORY_H
#define ZDA_SERVER_CLASS_REPOSITORY_H

#include "MofAst.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifierDecl.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zda::server
{

class ClassRepository
{
public:
    // Compiles every entry file of `mofDirectory` (each *.mof file directly
    // in it, in name order; included files live in subfolders) and builds
    // the repository. Declarations before any namespace pragma go to
    // `defaultNamespace`. Throws mof::MofError naming the file, line and
    // column of the first fault (also for a folder that cannot be read).
    static std::unique_ptr<ClassRepository> loadDirectory(
        const std::string& mofDirectory, const std::string& defaultNamespace = "root/cimv2");

    // Builds from declarations already parsed. Throws mof::MofError.
    explicit ClassRepository(const std::vector<mof::Declaration>& declarations);
    ~ClassRepository();

    ClassRepository(const ClassRepository&) = delete;
    ClassRepository& operator=(const ClassRepository&) = delete;

    // ---- namespaces and qualifier declarations --------------------------
    // The namespaces compiled from MOF (aliases are not listed).
    Pegasus::Array<Pegasus::CIMNamespaceName> enumerateNamespaces() const;
    // True for a compiled namespace and for an alias of one.
    bool namespaceExists(const Pegasus::CIMNamespaceName& nameSpace) const;

    // Makes `alias` a second name of the compiled namespace `target`: every
    // member then answers for `alias` as for `target`. Only while the
    // repository is being set up, before it is shared between threads.
    // Throws CIMException CIM_ERR_INVALID_NAMESPACE for an unknown target,
    // CIM_ERR_ALREADY_EXISTS when `alias` already names a namespace.
    void addNamespaceAlias(const Pegasus::CIMNamespaceName& alias, const Pegasus::CIMNamespaceName& target);
    // The aliases, each with the namespace it names.
    std::vector<std::pair<Pegasus::CIMNamespaceName, Pegasus::CIMNamespaceName>> namespaceAliases() const;

    // Throws CIMException CIM_ERR_INVALID_NAMESPACE for an unknown namespace,
    // CIM_ERR_NOT_FOUND for an unknown qualifier.
    Pegasus::CIMQualifierDecl getQualifier(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& qualifierName) const;
    Pegasus::Array<Pegasus::CIMQualifierDecl> enumerateQualifiers(
        const Pegasus::CIMNamespaceName& nameSpace) const;

    // ---- classes ---------------------------------------------------------
    // The class as GetClass gives it. With localOnly, only the properties,
    // methods and class qualifiers that the class itself defines or
    // overrides; without includeQualifiers, no qualifiers at any level;
    // without includeClassOrigin, no class origin on properties and
    // methods; a non-null propertyList keeps only the properties it names
    // (methods are not affected). Properties come inherited first, in
    // superclass order. Keys and the association flag are qualifiers: a
    // class fetched without qualifiers reports neither (getKeyNames,
    // isAssociation). Throws CIMException CIM_ERR_INVALID_NAMESPACE or
    // CIM_ERR_NOT_FOUND.
    Pegasus::CIMClass getClass(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        bool localOnly = true, bool includeQualifiers = true, bool includeClassOrigin = false,
        const Pegasus::CIMPropertyList& propertyList = Pegasus::CIMPropertyList()) const;

    bool classExists(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) const;

    // Subclasses of `className` (direct ones, or all descendants with
    // deepInheritance), superclasses before subclasses. A null className
    // means the root classes (or every class, deep). Throws CIMException
    // CIM_ERR_INVALID_NAMESPACE, or CIM_ERR_INVALID_CLASS for an unknown
    // className.
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, bool deepInheritance) const;
    // The classes of enumerateClassNames, each as getClass gives it.
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, bool deepInheritance, bool localOnly = true,
        bool includeQualifiers = true, bool includeClassOrigin = false) const;

    // The superclasses of `className`, nearest first. Throws as getClass.
    Pegasus::Array<Pegasus::CIMName> getSuperClassNames(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) const;

    // True when `className` is `ancestor` or one of its subclasses; false
    // when either is unknown.
    bool isSubclassOf(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        const Pegasus::CIMName& ancestor) const;

    // The association classes that can link an object of `className`: those
    // with a reference whose class is `className` or one of its
    // superclasses (so an association of a superclass counts). A non-empty
    // `role` keeps only associations in which that reference carries the
    // name `role`. Superclasses come before subclasses. Throws CIMException
    // CIM_ERR_INVALID_NAMESPACE or CIM_ERR_INVALID_CLASS.
    Pegasus::Array<Pegasus::CIMName> getAssociationClassNames(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, const Pegasus::String& role = Pegasus::String()) const;

    // ---- static instances ------------------------------------------------
    // Instances declared in MOF of `className` (and of its subclasses, with
    // deepInheritance), each with its full path (namespace set, no host).
    // Throws CIMException CIM_ERR_INVALID_NAMESPACE or CIM_ERR_INVALID_CLASS.
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, bool deepInheritance = true) const;

    // The instance with the keys of `instanceName` (its host and namespace
    // are ignored). Throws CIMException CIM_ERR_INVALID_NAMESPACE,
    // CIM_ERR_INVALID_CLASS for an unknown class, CIM_ERR_NOT_FOUND when
    // no such instance was declared.
    Pegasus::CIMInstance getInstance(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName) const;

private:
    struct Namespace;
    const Namespace& requireNamespace(const Pegasus::CIMNamespaceName& nameSpace) const;
    const Namespace* findNamespace(const Pegasus::CIMNamespaceName& nameSpace) const;

    std::vector<std::unique_ptr<Namespace>> _namespaces;
    std::vector<std::pair<Pegasus::CIMNamespaceName, const Namespace*>> _aliases;
};

}  // namespace zda::server

#endif
