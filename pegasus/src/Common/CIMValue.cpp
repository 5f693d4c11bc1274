#ifndef PEGASUS_USE_DEPRECATED_INTERFACES
#define PEGASUS_USE_DEPRECATED_INTERFACES
#endif
#include "CIMValueRep.h"
#include <Pegasus/Common/CIMValueAccess.h>

#include <cstdio>
#include <type_traits>

PEGASUS_NAMESPACE_BEGIN

namespace
{

template <class T>
struct TypeOf;
#define PEGASUS_VALUE_TYPE(T, CODE)                                                                          \
    template <>                                                                                              \
    struct TypeOf<T>                                                                                         \
    {                                                                                                        \
        static const CIMType code = CODE;                                                                    \
    };
PEGASUS_VALUE_TYPE(Boolean, CIMTYPE_BOOLEAN)
PEGASUS_VALUE_TYPE(Uint8, CIMTYPE_UINT8)
PEGASUS_VALUE_TYPE(Sint8, CIMTYPE_SINT8)
PEGASUS_VALUE_TYPE(Uint16, CIMTYPE_UINT16)
PEGASUS_VALUE_TYPE(Sint16, CIMTYPE_SINT16)
PEGASUS_VALUE_TYPE(Uint32, CIMTYPE_UINT32)
PEGASUS_VALUE_TYPE(Sint32, CIMTYPE_SINT32)
PEGASUS_VALUE_TYPE(Uint64, CIMTYPE_UINT64)
PEGASUS_VALUE_TYPE(Sint64, CIMTYPE_SINT64)
PEGASUS_VALUE_TYPE(Real32, CIMTYPE_REAL32)
PEGASUS_VALUE_TYPE(Real64, CIMTYPE_REAL64)
PEGASUS_VALUE_TYPE(Char16, CIMTYPE_CHAR16)
PEGASUS_VALUE_TYPE(String, CIMTYPE_STRING)
PEGASUS_VALUE_TYPE(CIMDateTime, CIMTYPE_DATETIME)
PEGASUS_VALUE_TYPE(CIMObjectPath, CIMTYPE_REFERENCE)
#undef PEGASUS_VALUE_TYPE

template <class T>
struct IsArray : std::false_type
{};
template <class T>
struct IsArray<Array<T>> : std::true_type
{};

const CIMValueRep& defaultRep()
{
    static const CIMValueRep rep;
    return rep;
}

template <class T>
std::shared_ptr<const CIMValueRep> makeScalar(const T& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::code;
    rep->isNull = false;
    rep->data = x;
    return rep;
}

template <class T>
std::shared_ptr<const CIMValueRep> makeArray(const Array<T>& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::code;
    rep->isArray = true;
    rep->isNull = false;
    rep->data = x;
    return rep;
}

template <class T>
void getScalar(const CIMValueRep& rep, T& x)
{
    if (rep.type != TypeOf<T>::code || rep.isArray)
        throw TypeMismatchException();
    if (!rep.isNull)
        x = std::get<T>(rep.data);
}

template <class T>
void getArray(const CIMValueRep& rep, Array<T>& x)
{
    if (rep.type != TypeOf<T>::code || !rep.isArray)
        throw TypeMismatchException();
    if (!rep.isNull)
        x = std::get<Array<T>>(rep.data);
}

template <class T>
bool arraysEqual(const Array<T>& a, const Array<T>& b)
{
    if (a.size() != b.size())
        return false;
    for (Uint32 i = 0; i < a.size(); i++)
        if (!(a[i] == b[i]))
            return false;
    return true;
}

bool arraysEqual(const Array<CIMObjectPath>& a, const Array<CIMObjectPath>& b)
{
    if (a.size() != b.size())
        return false;
    for (Uint32 i = 0; i < a.size(); i++)
        if (!a[i].identical(b[i]))
            return false;
    return true;
}

// Text of one element.
String text(Boolean x)
{
    return String(x ? "TRUE" : "FALSE");
}

template <class T>
String formatted(const char* format, T x)
{
    char buffer[64];
    snprintf(buffer, sizeof(buffer), format, x);
    return String(buffer);
}

String text(Uint8 x)
{
    return formatted("%u", unsigned(x));
}
String text(Sint8 x)
{
    return formatted("%d", int(x));
}
String text(Uint16 x)
{
    return formatted("%u", unsigned(x));
}
String text(Sint16 x)
{
    return formatted("%d", int(x));
}
String text(Uint32 x)
{
    return formatted("%u", x);
}
String text(Sint32 x)
{
    return formatted("%d", x);
}
String text(Uint64 x)
{
    return formatted("%llu", x);
}
String text(Sint64 x)
{
    return formatted("%lld", x);
}
String text(Real32 x)
{
    return formatted("%.7e", double(x));
}
String text(Real64 x)
{
    return formatted("%.16e", x);
}
String text(const Char16& x)
{
    return String(&x, 1);
}
String text(const String& x)
{
    return x;
}
String text(const CIMDateTime& x)
{
    return x.toString();
}
String text(const CIMObjectPath& x)
{
    return x.toString();
}

template <class T>
String text(const Array<T>& x)
{
    String result;
    for (Uint32 i = 0; i < x.size(); i++)
    {
        result.append(text(x[i]));
        result.append(Char16(' '));
    }
    return result;
}

String text(const std::shared_ptr<const CIMValueObjects>& x)
{
    return x->toString();
}

String text(std::monostate)
{
    return String();
}

}  // namespace

CIMValue::CIMValue() {}

CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    setNullValue(type, isArray, arraySize);
}

#define PEGASUS_VALUE_MEMBERS(T, PARAM)                                                                      \
    CIMValue::CIMValue(PARAM x) : _rep(makeScalar<T>(x)) {}                                                  \
    CIMValue::CIMValue(const Array<T>& x) : _rep(makeArray<T>(x)) {}                                         \
    void CIMValue::set(PARAM x)                                                                              \
    {                                                                                                        \
        _rep = makeScalar<T>(x);                                                                             \
    }                                                                                                        \
    void CIMValue::set(const Array<T>& x)                                                                    \
    {                                                                                                        \
        _rep = makeArray<T>(x);                                                                              \
    }                                                                                                        \
    void CIMValue::get(T& x) const                                                                           \
    {                                                                                                        \
        getScalar(_rep ? *_rep : defaultRep(), x);                                                           \
    }                                                                                                        \
    void CIMValue::get(Array<T>& x) const                                                                    \
    {                                                                                                        \
        getArray(_rep ? *_rep : defaultRep(), x);                                                            \
    }

PEGASUS_VALUE_MEMBERS(Boolean, Boolean)
PEGASUS_VALUE_MEMBERS(Uint8, Uint8)
PEGASUS_VALUE_MEMBERS(Sint8, Sint8)
PEGASUS_VALUE_MEMBERS(Uint16, Uint16)
PEGASUS_VALUE_MEMBERS(Sint16, Sint16)
PEGASUS_VALUE_MEMBERS(Uint32, Uint32)
PEGASUS_VALUE_MEMBERS(Sint32, Sint32)
PEGASUS_VALUE_MEMBERS(Uint64, Uint64)
PEGASUS_VALUE_MEMBERS(Sint64, Sint64)
PEGASUS_VALUE_MEMBERS(Real32, Real32)
PEGASUS_VALUE_MEMBERS(Real64, Real64)
PEGASUS_VALUE_MEMBERS(Char16, const Char16&)
PEGASUS_VALUE_MEMBERS(String, const String&)
PEGASUS_VALUE_MEMBERS(CIMDateTime, const CIMDateTime&)
PEGASUS_VALUE_MEMBERS(CIMObjectPath, const CIMObjectPath&)
#undef PEGASUS_VALUE_MEMBERS

// The deprecated char members treat char as sint8.
namespace
{

Array<Sint8> toSint8(const Array<char>& x)
{
    Array<Sint8> result;
    result.reserveCapacity(x.size());
    for (Uint32 i = 0; i < x.size(); i++)
        result.append(Sint8(x[i]));
    return result;
}

}  // namespace

CIMValue::CIMValue(char x) : _rep(makeScalar<Sint8>(Sint8(x))) {}
CIMValue::CIMValue(const Array<char>& x) : _rep(makeArray<Sint8>(toSint8(x))) {}
void CIMValue::set(char x)
{
    _rep = makeScalar<Sint8>(Sint8(x));
}
void CIMValue::set(const Array<char>& x)
{
    _rep = makeArray<Sint8>(toSint8(x));
}

void CIMValue::get(char& x) const
{
    Sint8 value = Sint8(x);
    get(value);
    x = char(value);
}

void CIMValue::get(Array<char>& x) const
{
    Array<Sint8> values;
    get(values);
    if (isNull())
        return;
    Array<char> result;
    result.reserveCapacity(values.size());
    for (Uint32 i = 0; i < values.size(); i++)
        result.append(char(values[i]));
    x = result;
}

CIMValue::CIMValue(const CIMValue& x) : _rep(x._rep) {}

CIMValue::CIMValue(CIMValue&& x) noexcept : _rep(std::move(x._rep)) {}

CIMValue::~CIMValue() {}

CIMValue& CIMValue::operator=(CIMValue&& x) noexcept
{
    _rep = std::move(x._rep);
    return *this;
}

CIMValue& CIMValue::operator=(const CIMValue& x)
{
    _rep = x._rep;
    return *this;
}

void CIMValue::assign(const CIMValue& x)
{
    _rep = x._rep;
}

void CIMValue::clear()
{
    _rep.reset();
}

Boolean CIMValue::typeCompatible(const CIMValue& x) const
{
    return getType() == x.getType() && isArray() == x.isArray();
}

Boolean CIMValue::isArray() const
{
    return _rep && _rep->isArray;
}

Boolean CIMValue::isNull() const
{
    return !_rep || _rep->isNull;
}

Uint32 CIMValue::getArraySize() const
{
    if (!_rep || !_rep->isArray)
        return 0;
    if (_rep->isNull)
        return _rep->nullArraySize;
    return std::visit(
        [](const auto& data) -> Uint32 {
            typedef std::decay_t<decltype(data)> D;
            if constexpr (std::is_same_v<D, std::shared_ptr<const CIMValueObjects>>)
                return data->size();
            else if constexpr (std::is_same_v<D, std::monostate>)
                return 0;
            else if constexpr (IsArray<D>::value)
                return data.size();
            else
                return 0;
        },
        _rep->data);
}

CIMType CIMValue::getType() const
{
    return _rep ? _rep->type : CIMTYPE_BOOLEAN;
}

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = type;
    rep->isArray = isArray;
    rep->isNull = true;
    rep->nullArraySize = isArray ? arraySize : 0;
    _rep = rep;
}

Boolean CIMValue::equal(const CIMValue& x) const
{
    if (!typeCompatible(x) || isNull() != x.isNull())
        return false;
    if (isNull() || _rep == x._rep)
        return true;
    return std::visit(
        [&x](const auto& a) -> bool {
            typedef std::decay_t<decltype(a)> D;
            const D* b = std::get_if<D>(&x._rep->data);
            if (!b)
                return false;
            if constexpr (std::is_same_v<D, std::shared_ptr<const CIMValueObjects>>)
                return a->equal(**b);
            else if constexpr (std::is_same_v<D, std::monostate>)
                return true;
            else if constexpr (std::is_same_v<D, CIMObjectPath>)
                return a.identical(*b);
            else if constexpr (IsArray<D>::value)
                return arraysEqual(a, *b);
            else
                return a == *b;
        },
        _rep->data);
}

String CIMValue::toString() const
{
    if (isNull())
        return String();
    return std::visit([](const auto& data) { return text(data); }, _rep->data);
}

Boolean operator==(const CIMValue& x, const CIMValue& y)
{
    return x.equal(y);
}

Boolean operator!=(const CIMValue& x, const CIMValue& y)
{
    return !x.equal(y);
}

const String* CIMValueAccess::scalarString(const CIMValue& value)
{
    const CIMValueRep* rep = value._rep.get();
    if (!rep || rep->isNull || rep->isArray || rep->type != CIMTYPE_STRING)
        return nullptr;
    return std::get_if<String>(&rep->data);
}

PEGASUS_NAMESPACE_END
