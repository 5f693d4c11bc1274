#include "RecordingFakes.h"

namespace zda_test
{

namespace recording
{

std::string arg(const String& s)
{
    return "\"" + text(s) + "\"";
}

std::string arg(const CIMClass& c)
{
    return text(c.getClassName());
}

std::string arg(const CIMInstance& i)
{
    return text(i.getClassName());
}

std::string arg(const CIMValue& v)
{
    return v.isNull() ? "null" : text(v.toString());
}

std::string arg(const Array<CIMParamValue>& parameters)
{
    std::string names = "(";
    for (Uint32 i = 0; i < parameters.size(); i++)
        names += (i ? "," : "") + text(parameters[i].getParameterName());
    return names + ")";
}

}  // namespace recording

void RecordingCIMOMBackend::note(const OperationContext& context, std::string call)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _calls.push_back(Call{std::move(call), userOf(context)});
}

std::vector<RecordingCIMOMBackend::Call> RecordingCIMOMBackend::calls() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls;
}

RecordingCIMOMBackend::Call RecordingCIMOMBackend::lastCall() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls.empty() ? Call{"<no call>", ""} : _calls.back();
}

}  // namespace zda_test
