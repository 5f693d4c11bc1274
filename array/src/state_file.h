// The state file: when one is open, the whole array is written to it as an
// array description after every call that changes the array, and read
// from it when it is opened again (a restart). Writes are atomic: the text
// goes to "<path>.tmp", is flushed to disk, and replaces the file by
// rename, so a crash leaves either the old or the new state, never a mix.
//
// Lives in the Runtime; every member is called under the model mutex.
#pragma once

#include <string>

#include "model.h"
#include "rcopy_model.h"
#include "task_model.h"

namespace zdasim {

struct Runtime;
class Faults;
class LogSink;

class StateFile : public ModelPart {
public:
    // `faults` may stop writes (see save); failures are written to `log`.
    StateFile(const RemoteCopy& rcopy, const Tasks& tasks, Faults& faults, LogSink& log)
        : rcopy_(rcopy), tasks_(tasks), faults_(faults), log_(log) {}

    // The path is a setting, not part of the array: emptying the array keeps it.
    void clear() override {}
    void changed(ArrayModel& model, time_t now) override;

    // Opens `path`: loads the array from it when the file exists (nothing
    // changes when it does not load), otherwise writes the present array
    // to it. Returns "" or the reason it failed.
    std::string open(Runtime& rt, const std::string& path);
    void close() {
        path_.clear();
        saved_.clear();
    }
    bool isOpen() const { return !path_.empty(); }

    // Writes the array now. Returns "" or the reason the write failed (the
    // reason is also logged at level 2); never throws. A fault injected for
    // "zdasim_state_write" stops the write half-way, as a crash would.
    std::string save(const ArrayModel& model);

    // Why the last save after a change failed ("" when it did not), and
    // forgets it.
    std::string takeFailure() { return std::move(failure_); }

    // Puts the array back as it was last loaded from or saved to the file,
    // so that a change that could not be saved is not kept either. Returns
    // "" or why it could not (nothing is done when no file is open).
    std::string restore(Runtime& rt, time_t now);

private:
    const RemoteCopy& rcopy_;
    const Tasks& tasks_;
    Faults& faults_;
    LogSink& log_;
    std::string path_;
    std::string saved_;    // the text the file holds
    std::string failure_;  // see takeFailure
};

// Sets up the array a new process starts with: the description in the file
// named by ZDA_ARRAY_DESCRIPTION, or the demo array when that is not set
// (or does not load: the reason is logged); then, when ZDA_ARRAY_STATE
// names a state file, it is opened as StateFile::open does.
void startArray(Runtime& rt);

}  // namespace zdasim
