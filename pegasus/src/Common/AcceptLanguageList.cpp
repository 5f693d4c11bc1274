#include <Pegasus/Common/AcceptLanguageList.h>

PEGASUS_NAMESPACE_BEGIN

AcceptLanguageList::AcceptLanguageList() {}

AcceptLanguageList::AcceptLanguageList(const AcceptLanguageList& acceptLanguages)
    : _tags(acceptLanguages._tags), _qualities(acceptLanguages._qualities)
{}

AcceptLanguageList::~AcceptLanguageList() {}

AcceptLanguageList& AcceptLanguageList::operator=(const AcceptLanguageList& acceptLanguages)
{
    _tags = acceptLanguages._tags;
    _qualities = acceptLanguages._qualities;
    return *this;
}

LanguageTag AcceptLanguageList::getLanguageTag(Uint32 index) const
{
    return _tags[index];
}

Real32 AcceptLanguageList::getQualityValue(Uint32 index) const
{
    return _qualities[index];
}

Uint32 AcceptLanguageList::size() const
{
    return _tags.size();
}

void AcceptLanguageList::insert(const LanguageTag& languageTag, Real32 qualityValue)
{
    Uint32 index = 0;
    while (index < _qualities.size() && _qualities[index] >= qualityValue)
        index++;
    _tags.insert(index, languageTag);
    _qualities.insert(index, qualityValue);
}

void AcceptLanguageList::remove(Uint32 index)
{
    _tags.remove(index);
    _qualities.remove(index);
}

Uint32 AcceptLanguageList::find(const LanguageTag& languageTag) const
{
    for (Uint32 i = 0; i < _tags.size(); i++)
        if (_tags[i] == languageTag)
            return i;
    return PEG_NOT_FOUND;
}

void AcceptLanguageList::clear()
{
    _tags.clear();
    _qualities.clear();
}

Boolean AcceptLanguageList::operator==(const AcceptLanguageList& acceptLanguages) const
{
    if (size() != acceptLanguages.size())
        return false;
    for (Uint32 i = 0; i < size(); i++)
        if (_tags[i] != acceptLanguages._tags[i] || _qualities[i] != acceptLanguages._qualities[i])
            return false;
    return true;
}

Boolean AcceptLanguageList::operator!=(const AcceptLanguageList& acceptLanguages) const
{
    return !(*this == acceptLanguages);
}

PEGASUS_NAMESPACE_END
