#include "ClassRepository.h"

#include "MofError.h"
#include "MofParser.h"
#include "MofSchema.h"
#include "SchemaObjects.h"

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>

#include <algorithm>
#include <filesystem>
#include <optional>

using namespace Pegasus;

namespace zda::server
{

namespace
{

std::string folded(const String& s)
{
    return mof::foldCase(toUtf8(s));
}

// One class as stored: the full object and the links of the hierarchy.
struct StoredClass
{
    CIMClass full;
    std::optional<size_t> super;
    std::vector<size_t> subclasses;                               // direct, in definition order
    std::vector<std::pair<std::string, std::string>> references;  // folded role, folded class
};

}  // namespace

struct ClassRepository::Namespace
{
    CIMNamespaceName name;
    std::vector<CIMQualifierDecl> qualifiers;
    std::map<std::string, size_t> qualifierIndex;  // folded name
    std::vector<StoredClass> classes;              // superclasses first
    std::map<std::string, size_t> classIndex;      // folded name
    std::vector<CIMInstance> instances;
    std::vector<size_t> instanceClass;  // class index of each instance

    std::optional<size_t> find(const CIMName& className) const
    {
        if (className.isNull())
            return std::nullopt;
        auto it = classIndex.find(folded(className.getString()));
        if (it == classIndex.end())
            return std::nullopt;
        return it->second;
    }

    size_t require(const CIMName& className, CIMStatusCode code) const
    {
        std::optional<size_t> index = find(className);
        if (!index)
            throw CIMException(code, className.getString());
        return *index;
    }

    bool isA(size_t cls, size_t ancestor) const
    {
        for (std::optional<size_t> at = cls; at; at = classes[*at].super)
            if (*at == ancestor)
                return true;
        return false;
    }

    // Descendants of `root` (direct ones only unless deep), superclasses
    // first; every class when root is null.
    std::vector<size_t> subclassesOf(std::optional<size_t> root, bool deep) const
    {
        std::vector<size_t> out;
        for (size_t i = 0; i < classes.size(); ++i)
        {
            if (!root)
            {
                if (deep || !classes[i].super)
                    out.push_back(i);
            }
            else if (i != *root && (deep ? isA(i, *root) : classes[i].super == root))
            {
                out.push_back(i);
            }
        }
        return out;
    }
};

namespace
{

CIMProperty filteredProperty(const CIMConstProperty& p, bool includeQualifiers, bool includeClassOrigin)
{
    CIMProperty out(p.getName(), p.getValue(), p.getArraySize(), p.getReferenceClassName(),
        includeClassOrigin ? p.getClassOrigin() : CIMName(), p.getPropagated());
    if (includeQualifiers)
        for (Uint32 i = 0; i < p.getQualifierCount(); ++i)
            out.addQualifier(p.getQualifier(i).clone());
    return out;
}

CIMMethod filteredMethod(const CIMConstMethod& m, bool includeQualifiers, bool includeClassOrigin)
{
    CIMMethod out(
        m.getName(), m.getType(), includeClassOrigin ? m.getClassOrigin() : CIMName(), m.getPropagated());
    if (includeQualifiers)
        for (Uint32 i = 0; i < m.getQualifierCount(); ++i)
            out.addQualifier(m.getQualifier(i).clone());
    for (Uint32 i = 0; i < m.getParameterCount(); ++i)
    {
        CIMConstParameter p = m.getParameter(i);
        CIMParameter param(
            p.getName(), p.getType(), p.isArray(), p.getArraySize(), p.getReferenceClassName());
        if (includeQualifiers)
            for (Uint32 j = 0; j < p.getQualifierCount(); ++j)
                param.addQualifier(p.getQualifier(j).clone());
        out.addParameter(param);
    }
    return out;
}

CIMClass filteredClass(const CIMClass& full, bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMClass out(full.getClassName(), full.getSuperClassName());
    if (includeQualifiers)
    {
        for (Uint32 i = 0; i < full.getQualifierCount(); ++i)
        {
            CIMConstQualifier q = full.getQualifier(i);
            if (localOnly && q.getPropagated())
                continue;
            out.addQualifier(q.clone());
        }
    }
    for (Uint32 i = 0; i < full.getPropertyCount(); ++i)
    {
        CIMConstProperty p = full.getProperty(i);
        if (localOnly && p.getPropagated())
            continue;
        if (!propertyList.isNull() && !propertyList.contains(p.getName()))
            continue;
        out.addProperty(filteredProperty(p, includeQualifiers, includeClassOrigin));
    }
    for (Uint32 i = 0; i < full.getMethodCount(); ++i)
    {
        CIMConstMethod m = full.getMethod(i);
        if (localOnly && m.getPropagated())
            continue;
        out.addMethod(filteredMethod(m, includeQualifiers, includeClassOrigin));
    }
    return out;
}

std::vector<mof::Declaration> parseDirectory(
    const std::string& directory, const std::string& defaultNamespace)
{
    namespace fs = std::filesystem;
    std::vector<std::string> entries;
    std::error_code error;
    fs::directory_iterator it(directory, error);
    if (error)
        throw mof::MofError(
            mof::SourceLocation{directory, 0, 0}, "cannot read the MOF folder: " + error.message());
    for (; it != fs::directory_iterator(); it.increment(error))
    {
        if (error)
            throw mof::MofError(
                mof::SourceLocation{directory, 0, 0}, "cannot read the MOF folder: " + error.message());
        if (it->is_regular_file() && it->path().extension() == ".mof")
            entries.push_back(it->path().string());
    }
    if (entries.empty())
        throw mof::MofError(mof::SourceLocation{directory, 0, 0}, "no *.mof entry file in the MOF folder");
    std::sort(entries.begin(), entries.end());
    std::vector<mof::Declaration> all;
    for (const std::string& entry : entries)
    {
        std::vector<mof::Declaration> declarations = mof::parseMofFile(entry, defaultNamespace);
        std::move(declarations.begin(), declarations.end(), std::back_inserter(all));
    }
    return all;
}

}  // namespace

std::unique_ptr<ClassRepository> ClassRepository::loadDirectory(
    const std::string& mofDirectory, const std::string& defaultNamespace)
{
    return std::make_unique<ClassRepository>(parseDirectory(mofDirectory, defaultNamespace));
}

ClassRepository::ClassRepository(const std::vector<mof::Declaration>& declarations)
{
    for (const mof::NamespaceSchema& schema : mof::resolveSchema(declarations))
    {
        auto ns = std::make_unique<Namespace>();
        ns->name = CIMNamespaceName(toString(schema.name));
        for (const mof::QualifierDeclaration& decl : schema.qualifiers)
        {
            ns->qualifierIndex.emplace(mof::foldCase(decl.name), ns->qualifiers.size());
            ns->qualifiers.push_back(toQualifierDecl(decl));
        }
        for (const mof::ResolvedClass& resolved : schema.classes)
        {
            StoredClass stored;
            stored.full = toClass(resolved);
            if (!resolved.superClass.empty())
            {
                stored.super = ns->classIndex.at(mof::foldCase(resolved.superClass));
                ns->classes[*stored.super].subclasses.push_back(ns->classes.size());
            }
            for (const mof::ResolvedProperty& p : resolved.properties)
                if (p.type == mof::DataType::Reference)
                    stored.references.emplace_back(mof::foldCase(p.name), mof::foldCase(p.referenceClass));
            ns->classIndex.emplace(mof::foldCase(resolved.name), ns->classes.size());
            ns->classes.push_back(std::move(stored));
        }
        for (const mof::ResolvedInstance& instance : schema.instances)
        {
            size_t cls = ns->classIndex.at(mof::foldCase(instance.className));
            ns->instances.push_back(toInstance(instance,
                schema.classes[*schema.findClass(instance.className)], ns->classes[cls].full, schema.name));
            ns->instanceClass.push_back(cls);
        }
        _namespaces.push_back(std::move(ns));
    }
}

ClassRepository::~ClassRepository() = default;

const ClassRepository::Namespace* ClassRepository::findNamespace(const CIMNamespaceName& nameSpace) const
{
    for (const auto& ns : _namespaces)
        if (ns->name.equal(nameSpace))
            return ns.get();
    for (const auto& [alias, ns] : _aliases)
        if (alias.equal(nameSpace))
            return ns;
    return nullptr;
}

void ClassRepository::addNamespaceAlias(const CIMNamespaceName& alias, const CIMNamespaceName& target)
{
    if (findNamespace(alias))
        throw CIMException(CIM_ERR_ALREADY_EXISTS, alias.getString());
    _aliases.emplace_back(alias, &requireNamespace(target));
}

std::vector<std::pair<CIMNamespaceName, CIMNamespaceName>> ClassRepository::namespaceAliases() const
{
    std::vector<std::pair<CIMNamespaceName, CIMNamespaceName>> out;
    for (const auto& [alias, ns] : _aliases)
        out.emplace_back(alias, ns->name);
    return out;
}

const ClassRepository::Namespace& ClassRepository::requireNamespace(const CIMNamespaceName& nameSpace) const
{
    const Namespace* ns = findNamespace(nameSpace);
    if (!ns)
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, nameSpace.getString());
    return *ns;
}

Array<CIMNamespaceName> ClassRepository::enumerateNamespaces() const
{
    Array<CIMNamespaceName> out;
    for (const auto& ns : _namespaces)
        out.append(ns->name);
    return out;
}

bool ClassRepository::namespaceExists(const CIMNamespaceName& nameSpace) const
{
    return findNamespace(nameSpace) != nullptr;
}

CIMQualifierDecl ClassRepository::getQualifier(
    const CIMNamespaceName& nameSpace, const CIMName& qualifierName) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    auto it = ns.qualifierIndex.find(folded(qualifierName.getString()));
    if (it == ns.qualifierIndex.end())
        throw CIMException(CIM_ERR_NOT_FOUND, qualifierName.getString());
    return ns.qualifiers[it->second].clone();
}

Array<CIMQualifierDecl> ClassRepository::enumerateQualifiers(const CIMNamespaceName& nameSpace) const
{
    Array<CIMQualifierDecl> out;
    for (const CIMQualifierDecl& decl : requireNamespace(nameSpace).qualifiers)
        out.append(decl.clone());
    return out;
}

CIMClass ClassRepository::getClass(const CIMNamespaceName& nameSpace, const CIMName& className,
    bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    size_t cls = ns.require(className, CIM_ERR_NOT_FOUND);
    return filteredClass(
        ns.classes[cls].full, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

bool ClassRepository::classExists(const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    const Namespace* ns = findNamespace(nameSpace);
    return ns && ns->find(className).has_value();
}

Array<CIMName> ClassRepository::enumerateClassNames(
    const CIMNamespaceName& nameSpace, const CIMName& className, bool deepInheritance) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    std::optional<size_t> root;
    if (!className.isNull())
        root = ns.require(className, CIM_ERR_INVALID_CLASS);
    Array<CIMName> out;
    for (size_t i : ns.subclassesOf(root, deepInheritance))
        out.append(ns.classes[i].full.getClassName());
    return out;
}

Array<CIMClass> ClassRepository::enumerateClasses(const CIMNamespaceName& nameSpace, const CIMName& className,
    bool deepInheritance, bool localOnly, bool includeQualifiers, bool includeClassOrigin) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    std::optional<size_t> root;
    if (!className.isNull())
        root = ns.require(className, CIM_ERR_INVALID_CLASS);
    Array<CIMClass> out;
    for (size_t i : ns.subclassesOf(root, deepInheritance))
        out.append(filteredClass(
            ns.classes[i].full, localOnly, includeQualifiers, includeClassOrigin, CIMPropertyList()));
    return out;
}

Array<CIMName> ClassRepository::getSuperClassNames(
    const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    size_t cls = ns.require(className, CIM_ERR_NOT_FOUND);
    Array<CIMName> out;
    for (std::optional<size_t> at = ns.classes[cls].super; at; at = ns.classes[*at].super)
        out.append(ns.classes[*at].full.getClassName());
    return out;
}

bool ClassRepository::isSubclassOf(
    const CIMNamespaceName& nameSpace, const CIMName& className, const CIMName& ancestor) const
{
    const Namespace* ns = findNamespace(nameSpace);
    if (!ns)
        return false;
    std::optional<size_t> cls = ns->find(className);
    std::optional<size_t> base = ns->find(ancestor);
    return cls && base && ns->isA(*cls, *base);
}

Array<CIMName> ClassRepository::getAssociationClassNames(
    const CIMNamespaceName& nameSpace, const CIMName& className, const String& role) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    size_t cls = ns.require(className, CIM_ERR_INVALID_CLASS);
    std::string wantedRole = folded(role);
    Array<CIMName> out;
    for (const StoredClass& assoc : ns.classes)
    {
        bool links = false;
        for (const auto& [refRole, refClass] : assoc.references)
        {
            if (!wantedRole.empty() && refRole != wantedRole)
                continue;
            auto target = ns.classIndex.find(refClass);
            links = links || (target != ns.classIndex.end() && ns.isA(cls, target->second));
        }
        if (links)
            out.append(assoc.full.getClassName());
    }
    return out;
}

Array<CIMInstance> ClassRepository::enumerateInstances(
    const CIMNamespaceName& nameSpace, const CIMName& className, bool deepInheritance) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    size_t cls = ns.require(className, CIM_ERR_INVALID_CLASS);
    Array<CIMInstance> out;
    for (size_t i = 0; i < ns.instances.size(); ++i)
    {
        size_t of = ns.instanceClass[i];
        if (of == cls || (deepInheritance && ns.isA(of, cls)))
            out.append(ns.instances[i].clone());
    }
    return out;
}

CIMInstance ClassRepository::getInstance(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName) const
{
    const Namespace& ns = requireNamespace(nameSpace);
    size_t cls = ns.require(instanceName.getClassName(), CIM_ERR_INVALID_CLASS);
    CIMObjectPath wanted(
        String(), ns.name, ns.classes[cls].full.getClassName(), instanceName.getKeyBindings());
    for (size_t i = 0; i < ns.instances.size(); ++i)
        if (ns.instanceClass[i] == cls && ns.instances[i].getPath().identical(wanted))
            return ns.instances[i].clone();
    throw CIMException(CIM_ERR_NOT_FOUND, instanceName.toString());
}

}  // namespace zda::server
