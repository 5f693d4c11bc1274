#include <Pegasus/Common/ContentLanguageList.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// The index-th '-'-separated part of tag, or "".
String tagPart(const String& tag, Uint32 index)
{
    Uint32 start = 0;
    for (Uint32 part = 0; part < index; part++)
    {
        Uint32 dash = tag.find(start, Char16('-'));
        if (dash == PEG_NOT_FOUND)
            return String();
        start = dash + 1;
    }
    Uint32 end = tag.find(start, Char16('-'));
    // The variant is everything after the second dash.
    if (index == 2)
        end = PEG_NOT_FOUND;
    return tag.subString(start, end == PEG_NOT_FOUND ? PEG_NOT_FOUND : end - start);
}

}  // namespace

LanguageTag::LanguageTag() {}

LanguageTag::LanguageTag(const String& languageTagString) : _tag(languageTagString) {}

String LanguageTag::getLanguage() const
{
    return tagPart(_tag, 0);
}
String LanguageTag::getCountry() const
{
    return tagPart(_tag, 1);
}
String LanguageTag::getVariant() const
{
    return tagPart(_tag, 2);
}
String LanguageTag::toString() const
{
    return _tag;
}

Boolean LanguageTag::operator==(const LanguageTag& languageTag) const
{
    return String::equalNoCase(_tag, languageTag._tag);
}

Boolean LanguageTag::operator!=(const LanguageTag& languageTag) const
{
    return !(*this == languageTag);
}

ContentLanguageList::ContentLanguageList() {}

ContentLanguageList::ContentLanguageList(const ContentLanguageList& contentLanguages)
    : _tags(contentLanguages._tags)
{}

ContentLanguageList::~ContentLanguageList() {}

ContentLanguageList& ContentLanguageList::operator=(const ContentLanguageList& contentLanguages)
{
    _tags = contentLanguages._tags;
    return *this;
}

LanguageTag ContentLanguageList::getLanguageTag(Uint32 index) const
{
    return _tags[index];
}

Uint32 ContentLanguageList::size() const
{
    return _tags.size();
}

void ContentLanguageList::append(const LanguageTag& languageTag)
{
    _tags.append(languageTag);
}

void ContentLanguageList::remove(Uint32 index)
{
    _tags.remove(index);
}

Uint32 ContentLanguageList::find(const LanguageTag& languageTag) const
{
    for (Uint32 i = 0; i < _tags.size(); i++)
        if (_tags[i] == languageTag)
            return i;
    return PEG_NOT_FOUND;
}

void ContentLanguageList::clear()
{
    _tags.clear();
}

Boolean ContentLanguageList::operator==(const ContentLanguageList& contentLanguages) const
{
    if (_tags.size() != contentLanguages._tags.size())
        return false;
    for (Uint32 i = 0; i < _tags.size(); i++)
        if (_tags[i] != contentLanguages._tags[i])
            return false;
    return true;
}

Boolean ContentLanguageList::operator!=(const ContentLanguageList& contentLanguages) const
{
    return !(*this == contentLanguages);
}

PEGASUS_NAMESPACE_END
