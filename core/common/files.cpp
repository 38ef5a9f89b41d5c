// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "common/fd.h"

namespace dorvane::files {
namespace {

Error errnoError(int err, const std::filesystem::path& path) {
    return Error{err, std::string(std::strerror(err)) + ": " + path.string()};
}

// Writes every piece; answers 0 or the errno value of the failed write.
int writePieces(int fd, std::initializer_list<std::string_view> pieces) {
    for (std::string_view data : pieces) {
        const char* p = data.data();
        std::size_t left = data.size();
        while (left > 0) {
            ssize_t n = ::write(fd, p, left);
            if (n < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return errno;
            }
            p += n;
            left -= static_cast<std::size_t>(n);
        }
    }
    return 0;
}

Status writeInPlace(const std::filesystem::path& path,
                    std::initializer_list<std::string_view> pieces, std::optional<unsigned> mode) {
    // Written over from the start and cut to length afterwards, not truncated first: ext4
    // flushes a file to the disk when it is closed after a truncation to nothing, which would
    // make every scratch write cost a disk write.
    UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, mode ? *mode : 0666));
    if (!fd) {
        return errnoError(errno, path);
    }
    if (int err = writePieces(fd.get(), pieces)) {
        return errnoError(err, path);
    }
    const off_t length = ::lseek(fd.get(), 0, SEEK_CUR);
    if (length < 0 || ::ftruncate(fd.get(), length) != 0) {
        return errnoError(errno, path);
    }
    if (::close(fd.release()) != 0) {
        return errnoError(errno, path);
    }
    return {};
}

}  // namespace

Result<std::string> readAll(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return errnoError(errno ? errno : ENOENT, path);
    }
    std::ostringstream out;
    out << in.rdbuf();
    if (in.bad()) {
        return errnoError(errno ? errno : EIO, path);
    }
    return out.str();
}

Status writeAtomically(const std::filesystem::path& path,
                       std::initializer_list<std::string_view> pieces, std::optional<unsigned> mode,
                       Durability durability) {
    if (durability == Durability::Scratch) {
        return writeInPlace(path, pieces, mode);
    }
    const std::filesystem::path dir =
        path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    std::string tmpl = (dir / ("." + path.filename().string() + ".XXXXXX")).string();
    UniqueFd fd(::mkstemp(tmpl.data()));
    if (!fd) {
        return errnoError(errno, path);
    }
    auto fail = [&](int err) {
        ::unlink(tmpl.c_str());
        return Status(errnoError(err, path));
    };
    unsigned bits = 0644;
    if (mode) {
        bits = *mode;
    } else {
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0) {
            bits = st.st_mode & 07777;
        } else {
            mode_t mask = ::umask(0);
            ::umask(mask);
            bits = 0666 & ~mask;
        }
    }
    if (::fchmod(fd.get(), bits) != 0) {
        return fail(errno);
    }
    if (int err = writePieces(fd.get(), pieces)) {
        return fail(err);
    }
    if (durability == Durability::Flushed && ::fsync(fd.get()) != 0) {
        return fail(errno);
    }
    if (::close(fd.release()) != 0) {
        return fail(errno);
    }
    if (::rename(tmpl.c_str(), path.c_str()) != 0) {
        return fail(errno);
    }
    if (durability != Durability::Flushed) {
        return {};
    }
    // Make the rename itself durable.
    if (const UniqueFd dfd(::open(dir.c_str(), O_RDONLY | O_DIRECTORY)); dfd) {
        ::fsync(dfd.get());
    }
    return {};
}

Status append(const std::filesystem::path& path, std::string_view data) {
    UniqueFd fd(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
    if (!fd) {
        return errnoError(errno, path);
    }
    ssize_t n;
    do {
        n = ::write(fd.get(), data.data(), data.size());
    } while (n < 0 && errno == EINTR);
    if (n < 0) {
        return errnoError(errno, path);
    }
    if (static_cast<std::size_t>(n) != data.size()) {
        return errnoError(ENOSPC, path);
    }
    if (::close(fd.release()) != 0) {
        return errnoError(errno, path);
    }
    return {};
}

}  // namespace dorvane::files
