#include "state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "call.h"
#include "description.h"

namespace zdasim {

namespace {

std::string sysError(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

std::string directoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

void StateFile::changed(ArrayModel& model, time_t now) {
    (void)now;
    if (isOpen()) failure_ = save(model);
}

std::string StateFile::restore(Runtime& rt, time_t now) {
    if (!isOpen()) return {};
    LoadedArray loaded;
    std::string error = parseDescription(saved_, path_, now, loaded);
    if (!error.empty()) return error;
    // The audit records are not part of the file and stay as they are.
    std::deque<EventRecord> events = std::move(rt.model.events);
    installArray(rt, std::move(loaded));
    rt.model.events = std::move(events);
    return {};
}

std::string StateFile::save(const ArrayModel& model) {
    if (!isOpen()) return "no state file is open";
    std::string text;
    try {
        text = describeArray(model, rcopy_.state, tasks_.state);
    } catch (const std::exception& e) {
        const std::string error = std::string("cannot describe the array: ") + e.what();
        log_.write(LOG_LEVEL_ERROR, "array state file: " + error);
        return error;
    }
    const std::string tmp = path_ + ".tmp";
    std::string error;
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        error = sysError("cannot create", tmp);
    } else {
        std::optional<Fault> crash = faults_.take("zdasim_state_write");
        if (crash) {
            // Stop half-way through, as a process killed while writing would.
            writeAll(fd, text.data(), text.size() / 2);
            ::close(fd);
            error = "write of " + tmp + " stopped half-way (" + crash->text + ")";
        } else if (!writeAll(fd, text.data(), text.size())) {
            error = sysError("cannot write", tmp);
            ::close(fd);
        } else if (::fsync(fd) != 0) {
            error = sysError("cannot flush", tmp);
            ::close(fd);
        } else if (::close(fd) != 0) {
            error = sysError("cannot close", tmp);
        } else if (::rename(tmp.c_str(), path_.c_str()) != 0) {
            error = sysError("cannot rename " + tmp + " to", path_);
        } else {
            // The rename itself must reach the disk too.
            const int dir = ::open(directoryOf(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (dir >= 0) {
                ::fsync(dir);
                ::close(dir);
            }
            saved_ = std::move(text);
        }
    }
    if (!error.empty()) log_.write(LOG_LEVEL_ERROR, "array state file: " + error);
    return error;
}

void startArray(Runtime& rt) {
    std::string error;
    const char* description = std::getenv("ZDA_ARRAY_DESCRIPTION");
    if (description && *description) {
        std::ifstream in(description, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        LoadedArray loaded;
        error = in ? parseDescription(text.str(), description, rt.clock.now(), loaded)
                   : std::string(description) + ": cannot open: " + std::strerror(errno);
        if (error.empty()) installArray(rt, std::move(loaded));
        else rt.log.write(LOG_LEVEL_ERROR, "array description: " + error + "; starting with the demo array");
    }
    if (!description || !*description || !error.empty()) {
        error = loadDemoArray(rt);
        if (!error.empty()) rt.log.write(LOG_LEVEL_ERROR, "demo array: " + error);
    }
    const char* state = std::getenv("ZDA_ARRAY_STATE");
    if (state && *state) {
        error = rt.stateFile.open(rt, state);
        if (!error.empty()) rt.log.write(LOG_LEVEL_ERROR, "array state file: " + error);
    }
}

std::string StateFile::open(Runtime& rt, const std::string& path) {
    if (path.empty()) return "no state file named";
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        std::ifstream in(path, std::ios::binary);
        if (!in) return sysError("cannot open", path);
        std::ostringstream text;
        text << in.rdbuf();
        if (in.bad()) return sysError("cannot read", path);
        LoadedArray loaded;
        std::string error = parseDescription(text.str(), path, rt.clock.now(), loaded);
        if (!error.empty()) return error;
        installArray(rt, std::move(loaded));
        path_ = path;
        saved_ = text.str();
        return {};
    }
    if (errno != ENOENT) return sysError("cannot open", path);
    // A new state file starts with the array as it is.
    path_ = path;
    std::string error = save(rt.model);
    if (!error.empty()) path_.clear();
    return error;
}

}  // namespace zdasim
