#pragma once

#include <cstdint>
#include <memory>

#include "base/text.h"

namespace tavrix::ports {

/// A file open for reading. While it is, nobody can change or remove it on Windows; elsewhere they
/// can, and whoever reads it twice has to look whether it is still the same.
class FileReader {
  public:
    virtual ~FileReader() = default;
    /// In bytes, as it is now.
    virtual std::uint64_t size() = 0;
    /// Where the next read begins; 0 at first.
    virtual void seek(std::uint64_t position) = 0;
    /// Fills `buffer`. Gives how many bytes it has: fewer only at the file's end.
    virtual std::size_t read(std::span<std::uint8_t> buffer) = 0;
};

/// A new file. It stands under its name only with `keep`, in the place of what was there; without
/// one nothing is left of it, and what was there stays.
class FileWriter {
  public:
    virtual ~FileWriter() = default;
    /// All of `bytes`, or it throws: a full disk is one reason.
    virtual void write(base::ByteView bytes) = 0;
    /// Ends the writing. Throws when the system then turns out not to have stored everything.
    virtual void keep() = 0;
};

enum class Readers { everyone, owner };

/// The file system. Paths are the host's own, with backslashes, and may be longer than 260
/// characters. Failures throw base::AutomationError unless told otherwise.
class Files {
  public:
    virtual ~Files() = default;
    /// True when the attributes of `path` can be read and do not say that it is a folder; false for
    /// everything else, trouble included.
    virtual bool is_file(base::TextView path) = 0;
    /// Replaces what stands at `to`.
    virtual void copy(base::TextView from, base::TextView to) = 0;
    /// Adds `bytes` to the file's end, all of them at once: several processes may append to one
    /// file, and their pieces do not mix. Makes the file when it is missing, but no folder.
    virtual void append(base::TextView path, base::ByteView bytes) = 0;
};

/// The same with what it takes to work on files of any size.
class DataFiles : public Files {
  public:
    /// Refuses folders.
    virtual std::unique_ptr<FileReader> open(base::TextView path) = 0;
    /// The same for a file that others may append to meanwhile.
    virtual std::unique_ptr<FileReader> open_growing(base::TextView path) = 0;
    /// Makes no folder. `readers` says who besides the system's administrators may read the file.
    virtual std::unique_ptr<FileWriter> create(base::TextView path, Readers readers) = 0;
    /// The same for whom the file that stands at `path` lets read, or where none does, the one at
    /// `origin`. On Windows the folder says who may.
    virtual std::unique_ptr<FileWriter> create_like(base::TextView path, base::TextView origin) = 0;
    virtual void remove(base::TextView path) = 0;
    /// Overwrites the file's bytes where they stand before it removes it.
    virtual void wipe(base::TextView path) = 0;
};

/// The bytes of a file of at most `most` bytes; throws for a longer one.
base::Bytes read_whole(DataFiles& files, base::TextView path, std::size_t most);

}  // namespace tavrix::ports
