#include "state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "call.h"
#include "description.h"

namespace zdasim
{

using json = nlohmann::ordered_json;

namespace
{

constexpr char kJournalHeader[] = "zda-array-journal ";
constexpr off_t kCompactAfter = 4 << 20;  // journal bytes

std::string sysError(const std::string& what, const std::string& path)
{
    return what + " " + path + ": " + std::strerror(errno);
}

bool writeAll(int fd, const char* data, size_t size)
{
    while (size > 0)
    {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

std::string directoryOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A renamed or newly created file is only durable once its directory is.
void syncDirectoryOf(const std::string& path)
{
    const int dir = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0)
    {
        ::fsync(dir);
        ::close(dir);
    }
}

// The check that tells a whole record (or the snapshot a journal follows)
// from one cut short or replaced: 64-bit FNV-1a, as 16 hex digits.
std::string digest(const std::string& text)
{
    uint64_t h = 0xcbf29ce484222325ull;
    for (unsigned char c : text)
    {
        h ^= c;
        h *= 0x100000001b3ull;
    }
    char out[17];
    std::snprintf(out, sizeof out, "%016llx", static_cast<unsigned long long>(h));
    return out;
}

// Reads the whole file; false with errno set when it cannot.
bool readWhole(const std::string& path, std::string& text)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    std::ostringstream s;
    s << in.rdbuf();
    if (in.bad())
        return false;
    text = s.str();
    return true;
}

// A description (as the snapshot holds it) in pieces.
DescriptionPieces piecesOf(const std::string& text)
{
    DescriptionPieces pieces;
    json doc = json::parse(text);
    for (auto& [key, value] : doc.items())
    {
        if (key == "format" || key == "version")
            continue;
        if (key == "volumes" || key == "vvsets")
        {
            auto& into = key == "volumes" ? pieces.volumes : pieces.sets;
            for (json& item : value)
            {
                const uint32_t id = item.at("id").get<uint32_t>();
                into[id] = std::move(item);
            }
        }
        else
        {
            pieces.sections[key] = std::move(value);
        }
    }
    return pieces;
}

void apply(const json& record, DescriptionPieces& pieces)
{
    if (record.contains("sections"))
        for (const auto& [key, value] : record["sections"].items())
            pieces.sections[key] = value;
    auto upsert = [&](const char* key, std::map<uint32_t, json>& into) {
        if (record.contains(key))
            for (const json& item : record[key])
                into[item.at("id").get<uint32_t>()] = item;
    };
    auto erase = [&](const char* key, std::map<uint32_t, json>& from) {
        if (record.contains(key))
            for (const json& id : record[key])
                from.erase(id.get<uint32_t>());
    };
    upsert("volumes", pieces.volumes);
    erase("volumesGone", pieces.volumes);
    upsert("vvsets", pieces.sets);
    erase("vvsetsGone", pieces.sets);
}

}  // namespace

void StateFile::changed(ArrayModel& model, time_t now)
{
    (void)now;
    if (isOpen())
        failure_ = save(model);
    else
        model.takeChanges();
}

void StateFile::closeJournal()
{
    if (journal_ >= 0)
        ::close(journal_);
    journal_ = -1;
}

std::string StateFile::readFiles(const std::string& path, std::string& error)
{
    std::string snapshot;
    if (!readWhole(path, snapshot))
    {
        error = sysError("cannot read", path);
        return {};
    }
    const std::string journalFile = path + ".journal";
    std::string journal;
    if (!readWhole(journalFile, journal))
        return snapshot;
    const std::string header = kJournalHeader + digest(snapshot) + "\n";
    if (journal.compare(0, header.size(), header) != 0)
    {
        // Left by a compaction cut short after the new snapshot was in place:
        // the snapshot already holds these changes.
        if (!journal.empty())
            log_.write(
                LOG_LEVEL_WARNING, "array state file: " + journalFile + " follows another snapshot; ignored");
        return snapshot;
    }
    std::vector<json> records;
    for (size_t pos = header.size(); pos < journal.size();)
    {
        const size_t end = journal.find('\n', pos);
        const std::string line = journal.substr(
            pos, end == std::string::npos ? std::string::npos : end - pos);
        bool whole = end != std::string::npos && line.size() > 17 && line[16] == ' ' &&
            line.compare(0, 16, digest(line.substr(17))) == 0;
        if (whole)
        {
            try
            {
                records.push_back(json::parse(line.substr(17)));
            }
            catch (const json::exception&)
            {
                whole = false;
            }
        }
        if (!whole)
        {
            if (end == std::string::npos || end + 1 == journal.size())
            {
                // The last record, cut short by a crash: its call never returned.
                log_.write(LOG_LEVEL_WARNING,
                    "array state file: " + journalFile + ": ignoring a last record cut short");
                break;
            }
            error = journalFile + ": record " + std::to_string(records.size() + 1) + " is damaged";
            return {};
        }
        pos = end + 1;
    }
    if (records.empty())
        return snapshot;
    try
    {
        DescriptionPieces pieces = piecesOf(snapshot);
        for (const json& record : records)
            apply(record, pieces);
        return assembleDescription(pieces);
    }
    catch (const json::exception& e)
    {
        error = path + ": cannot replay the journal: " + e.what();
        return {};
    }
}

std::string StateFile::compact(const std::string& text)
{
    closeJournal();
    const std::string tmp = path_ + ".tmp";
    std::string error;
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
    {
        error = sysError("cannot create", tmp);
    }
    else
    {
        std::optional<Fault> crash = faults_.take("zdasim_state_write");
        if (crash)
        {
            // Stop half-way through, as a process killed while writing would.
            writeAll(fd, text.data(), text.size() / 2);
            ::close(fd);
            error = "write of " + tmp + " stopped half-way (" + crash->text + ")";
        }
        else if (!writeAll(fd, text.data(), text.size()))
        {
            error = sysError("cannot write", tmp);
            ::close(fd);
        }
        else if (::fsync(fd) != 0)
        {
            error = sysError("cannot flush", tmp);
            ::close(fd);
        }
        else if (::close(fd) != 0)
        {
            error = sysError("cannot close", tmp);
        }
        else if (::rename(tmp.c_str(), path_.c_str()) != 0)
        {
            error = sysError("cannot rename " + tmp + " to", path_);
        }
        else
        {
            syncDirectoryOf(path_);
        }
    }
    if (!error.empty())
        return error;

    // The new journal names the snapshot it follows: should the process die
    // before it is in place, the old journal is ignored for not matching.
    const std::string header = kJournalHeader + digest(text) + "\n";
    const std::string file = journalPath();
    const int j = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
    if (j < 0)
        return sysError("cannot create", file);
    if (!writeAll(j, header.data(), header.size()) || ::fdatasync(j) != 0)
    {
        error = sysError("cannot write", file);
        ::close(j);
        return error;
    }
    syncDirectoryOf(file);
    try
    {
        sections_.clear();
        const DescriptionPieces pieces = piecesOf(text);
        for (const auto& [key, value] : pieces.sections.items())
            sections_[key] = value.dump();
    }
    catch (const json::exception& e)
    {
        ::close(j);
        return std::string("cannot read back the snapshot: ") + e.what();
    }
    journal_ = j;
    journalSize_ = static_cast<off_t>(header.size());
    snapshotSize_ = static_cast<off_t>(text.size());
    return {};
}

std::string StateFile::append(const std::string& line)
{
    std::optional<Fault> crash = faults_.take("zdasim_state_write");
    if (crash)
    {
        writeAll(journal_, line.data(), line.size() / 2);
        return "write of " + journalPath() + " stopped half-way (" + crash->text + ")";
    }
    if (!writeAll(journal_, line.data(), line.size()))
        return sysError("cannot write", journalPath());
    if (::fdatasync(journal_) != 0)
        return sysError("cannot flush", journalPath());
    journalSize_ += static_cast<off_t>(line.size());
    return {};
}

std::string StateFile::recordOf(
    const ArrayModel& model, const ModelChanges& changes, std::map<std::string, std::string>& sections)
{
    json record = json::object();
    const json described = describeSections(model, rcopy_.state, tasks_.state);
    for (const auto& [key, value] : described.items())
    {
        std::string text = value.dump();
        if (sections_[key] == text)
            continue;
        record["sections"][key] = value;
        sections[key] = std::move(text);
    }
    for (uint32_t id : changes.volumes)
    {
        if (const Volume* v = model.volumeById(id))
            record["volumes"].push_back(describeVolume(model, *v));
        else
            record["volumesGone"].push_back(id);
    }
    for (uint32_t id : changes.sets)
    {
        if (const VVSet* s = model.setById(id))
            record["vvsets"].push_back(describeSet(*s));
        else
            record["vvsetsGone"].push_back(id);
    }
    return record.empty() ? std::string() : record.dump();
}

std::string StateFile::save(ArrayModel& model)
{
    if (!isOpen())
        return "no state file is open";
    std::string error;
    try
    {
        const ModelChanges changes = model.takeChanges();
        if (journal_ < 0 || changes.whole)
        {
            // Everything changed, or an earlier write failed: a whole new snapshot.
            error = compact(describeArray(model, rcopy_.state, tasks_.state));
        }
        else
        {
            std::map<std::string, std::string> sections;
            const std::string record = recordOf(model, changes, sections);
            if (!record.empty())
                error = append(digest(record) + " " + record + "\n");
            if (error.empty())
                for (auto& [key, text] : sections)
                    sections_[key] = std::move(text);
            // A journal that outgrew its snapshot is folded into a new one:
            // the cost is paid once per that many bytes of changes, so a
            // change still costs the same on average, and a restart does not
            // replay a long history. The change is already safe in the
            // journal; should this fail, the next save tries again.
            if (error.empty() && journalSize_ > kCompactAfter && journalSize_ > 2 * snapshotSize_)
            {
                const std::string why = compact(describeArray(model, rcopy_.state, tasks_.state));
                if (!why.empty())
                    log_.write(LOG_LEVEL_ERROR, "array state file: cannot compact: " + why);
            }
        }
    }
    catch (const std::exception& e)
    {
        error = std::string("cannot describe the array: ") + e.what();
    }
    if (!error.empty())
    {
        // What follows a failed write cannot be trusted to line up after it:
        // the next save writes a whole snapshot and a fresh journal.
        closeJournal();
        log_.write(LOG_LEVEL_ERROR, "array state file: " + error);
    }
    return error;
}

std::string StateFile::restore(Runtime& rt, time_t now)
{
    if (!isOpen())
        return {};
    std::string error;
    const std::string text = readFiles(path_, error);
    if (!error.empty())
        return error;
    LoadedArray loaded;
    error = parseDescription(text, path_, now, loaded);
    if (!error.empty())
        return error;
    // The audit records are not part of the file and stay as they are.
    std::deque<EventRecord> events = std::move(rt.model.events);
    installArray(rt, std::move(loaded));
    rt.model.events = std::move(events);
    rt.model.takeChanges();  // the array is as the files hold it
    return {};
}

std::string StateFile::open(Runtime& rt, const std::string& path)
{
    if (path.empty())
        return "no state file named";
    close();
    struct stat st;
    if (::stat(path.c_str(), &st) == 0)
    {
        std::string error;
        const std::string text = readFiles(path, error);
        if (!error.empty())
            return error;
        LoadedArray loaded;
        error = parseDescription(text, path, rt.clock.now(), loaded);
        if (!error.empty())
            return error;
        path_ = path;
        error = compact(text);
        if (!error.empty())
        {
            path_.clear();
            return error;
        }
        installArray(rt, std::move(loaded));
        rt.model.takeChanges();
        return {};
    }
    if (errno != ENOENT)
        return sysError("cannot open", path);
    // A new state file starts with the array as it is.
    path_ = path;
    std::string error = compact(describeArray(rt.model, rcopy_.state, tasks_.state));
    if (error.empty())
        rt.model.takeChanges();
    else
        path_.clear();
    return error;
}

void StateFile::close()
{
    if (!isOpen())
        return;
    std::string error;
    const std::string text = readFiles(path_, error);
    if (error.empty())
        error = compact(text);
    if (!error.empty())
        log_.write(LOG_LEVEL_ERROR, "array state file: cannot compact: " + error);
    closeJournal();
    path_.clear();
    sections_.clear();
}

void startArray(Runtime& rt)
{
    std::string error;
    const char* description = std::getenv("ZDA_ARRAY_DESCRIPTION");
    if (description && *description)
    {
        std::ifstream in(description, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        LoadedArray loaded;
        error = in ? parseDescription(text.str(), description, rt.clock.now(), loaded)
                   : std::string(description) + ": cannot open: " + std::strerror(errno);
        if (error.empty())
            installArray(rt, std::move(loaded));
        else
            rt.log.write(LOG_LEVEL_ERROR, "array description: " + error + "; starting with the demo array");
    }
    if (!description || !*description || !error.empty())
    {
        error = loadDemoArray(rt);
        if (!error.empty())
            rt.log.write(LOG_LEVEL_ERROR, "demo array: " + error);
    }
    const char* state = std::getenv("ZDA_ARRAY_STATE");
    if (state && *state)
    {
        error = rt.stateFile.open(rt, state);
        if (!error.empty())
            rt.log.write(LOG_LEVEL_ERROR, "array state file: " + error);
    }
}

}  // namespace zdasim
