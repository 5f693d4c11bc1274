// The languages a client accepts, each with a quality weight (0.0 - 1.0).
#ifndef Pegasus_AcceptLanguageList_h
#define Pegasus_AcceptLanguageList_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/ContentLanguageList.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE AcceptLanguageList
{
public:
    AcceptLanguageList();
    AcceptLanguageList(const AcceptLanguageList& acceptLanguages);
    ~AcceptLanguageList();
    AcceptLanguageList& operator=(const AcceptLanguageList& acceptLanguages);

    // Out of range throws IndexOutOfBoundsException.
    LanguageTag getLanguageTag(Uint32 index) const;
    Real32 getQualityValue(Uint32 index) const;
    Uint32 size() const;
    // Keeps the list ordered by descending quality (stable for equal ones).
    void insert(const LanguageTag& languageTag, Real32 qualityValue);
    void remove(Uint32 index);
    Uint32 find(const LanguageTag& languageTag) const;
    void clear();
    Boolean operator==(const AcceptLanguageList& acceptLanguages) const;
    Boolean operator!=(const AcceptLanguageList& acceptLanguages) const;

private:
    Array<LanguageTag> _tags;
    Array<Real32> _qualities;
};

PEGASUS_NAMESPACE_END

#endif
