// The state file: when one is open, the array is kept on disk in two files
// and read from them when it is opened again (a restart).
//
//  - `<path>`, the snapshot: the whole array as an array description,
//    replaced atomically (written to "<path>.tmp", flushed, renamed).
//  - `<path>.journal`, the journal: a header naming the snapshot it follows
//    (by a hash of its text), then one record per change holding only the
//    pieces of the description the change touched. Each record is appended
//    and flushed to disk before the call that made the change returns, so
//    a change costs the same however large the array is, and an
//    acknowledged change survives a crash.
//
// Opening replays the journal on the snapshot and compacts: the result
// becomes the new snapshot and the journal starts empty; closing compacts
// too, and so does a change after which the journal is both over 4 MiB and
// over twice the snapshot. A record cut short by a crash (the last one) is ignored; a journal
// that follows another snapshot (a crash during compaction, after the new
// snapshot was in place) is ignored as well, since that snapshot already
// holds its changes.
//
// Lives in the Runtime; every member is called under the model mutex.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>

#include "model.h"
#include "rcopy_model.h"
#include "task_model.h"

namespace zdasim
{

struct Runtime;
class Faults;
class LogSink;

class StateFile : public ModelPart
{
public:
    // `faults` may stop writes (see save); failures are written to `log`.
    StateFile(const RemoteCopy& rcopy, const Tasks& tasks, Faults& faults, LogSink& log)
        : rcopy_(rcopy), tasks_(tasks), faults_(faults), log_(log)
    {}
    ~StateFile() override { closeJournal(); }
    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    // The path is a setting, not part of the array: emptying the array keeps it.
    void clear() override {}
    void changed(ArrayModel& model, time_t now) override;

    // Opens `path`: loads the array from the snapshot and its journal when
    // the snapshot exists (nothing changes when it does not load) and
    // compacts them, otherwise writes the present array as the snapshot.
    // Returns "" or the reason it failed.
    std::string open(Runtime& rt, const std::string& path);
    // Compacts (the journal's changes go into the snapshot) and stops
    // keeping the array in the file.
    void close();
    bool isOpen() const { return !path_.empty(); }

    // Writes the changes the model noted since the last save (everything
    // when it noted the whole array, or the journal cannot be appended to).
    // Returns "" or the reason the write failed (also logged at level 2);
    // never throws. A fault injected for "zdasim_state_write" stops the
    // write half-way, as a crash would.
    std::string save(ArrayModel& model);

    // Why the last save after a change failed ("" when it did not), and
    // forgets it.
    std::string takeFailure() { return std::move(failure_); }

    // Puts the array back as the files hold it, so that a change that
    // could not be saved is not kept either. Returns "" or why it could not
    // (nothing is done when no file is open).
    std::string restore(Runtime& rt, time_t now);

private:
    std::string journalPath() const { return path_ + ".journal"; }
    // The description the files at `path` hold, or "" with `error` set.
    std::string readFiles(const std::string& path, std::string& error);
    // Writes `text` (a description) as the snapshot and starts an empty
    // journal after it.
    std::string compact(const std::string& text);
    // The record of the changes the model noted, or "" when none.
    // The record of `changes` (and of the sections that differ from what
    // the files hold, put in `sections`), or "" when nothing changed.
    std::string recordOf(
        const ArrayModel& model, const ModelChanges& changes, std::map<std::string, std::string>& sections);
    std::string append(const std::string& line);
    void closeJournal();

    const RemoteCopy& rcopy_;
    const Tasks& tasks_;
    Faults& faults_;
    LogSink& log_;
    std::string path_;
    int journal_ = -1;       // open for appending, or -1: the next save compacts
    off_t journalSize_ = 0;  // bytes of complete records (and the header)
    off_t snapshotSize_ = 0;
    // The sections other than volumes and vvsets as the files hold them
    // (compact JSON by name): a record carries only those that differ.
    std::map<std::string, std::string> sections_;
    std::string failure_;  // see takeFailure
};

// Sets up the array a new process starts with: the description in the file
// named by ZDA_ARRAY_DESCRIPTION, or the demo array when that is not set
// (or does not load: the reason is logged); then, when ZDA_ARRAY_STATE
// names a state file, it is opened as StateFile::open does.
void startArray(Runtime& rt);

}  // namespace zdasim
