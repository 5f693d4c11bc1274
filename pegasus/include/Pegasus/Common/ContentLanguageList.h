// Language tags and the list of languages a message is written in.
#ifndef Pegasus_ContentLanguageList_h
#define Pegasus_ContentLanguageList_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

// A language tag such as "en-US". Tags compare ignoring case. The text is
// kept as given; it is split on '-' into language, country and variant.
class PEGASUS_COMMON_LINKAGE LanguageTag
{
public:
    LanguageTag();
    LanguageTag(const String& languageTagString);
    String getLanguage() const;
    String getCountry() const;
    String getVariant() const;
    String toString() const;
    Boolean operator==(const LanguageTag& languageTag) const;
    Boolean operator!=(const LanguageTag& languageTag) const;

private:
    String _tag;
};

class PEGASUS_COMMON_LINKAGE ContentLanguageList
{
public:
    ContentLanguageList();
    ContentLanguageList(const ContentLanguageList& contentLanguages);
    ~ContentLanguageList();
    ContentLanguageList& operator=(const ContentLanguageList& contentLanguages);

    // Out of range throws IndexOutOfBoundsException.
    LanguageTag getLanguageTag(Uint32 index) const;
    Uint32 size() const;
    void append(const LanguageTag& languageTag);
    void remove(Uint32 index);
    Uint32 find(const LanguageTag& languageTag) const;
    void clear();
    Boolean operator==(const ContentLanguageList& contentLanguages) const;
    Boolean operator!=(const ContentLanguageList& contentLanguages) const;

private:
    Array<LanguageTag> _tags;
};

PEGASUS_NAMESPACE_END

#endif
