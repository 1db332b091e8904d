#include "Base/OS/qvOSDirectoryIterator.h"

#include "Base/OS/Internal/LocalFileTransport.h"
#include "Base/OS/qvOSFile.h"

#include <utility>

namespace qvOS {

using qvString::IString;

namespace {

bool isSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// "." and ".." of a directory, by the end of the path.
bool isSelfOrParent(IString const & path) {
    unsigned const n = path.length();
    if (n <= 3 || path[n - 1] != L'.')
        return false;
    return isSeparator(path[n - 2]) || (path[n - 2] == L'.' && isSeparator(path[n - 3]));
}

} // namespace

DirectoryIterator::DirectoryIterator(IString const & root) {
    IString name;
    name.assign(root);
    unsigned length = name.length();
    while (length > 1 && isSeparator(root[length - 1]))
        --length;
    name.erase(length);
    iteratorEntry entry = examine(name);
    if (entry.valid)
        entries_.push_back(std::move(entry));
}

DirectoryIterator::~DirectoryIterator() = default;

DirectoryIterator::iteratorEntry DirectoryIterator::examine(IString const & name) {
    iteratorEntry entry;
    entry.name.assign(name);
    File file(name);
    if (auto const * const local = dynamic_cast<LocalFileTransport const *>(file.getTransport())) {
        entry.valid = local->isThere(entry.directory);
        return entry;
    }
    FileStatus status;
    entry.valid = file.isValid() && !file.query(status) && status.exists();
    entry.directory = entry.valid && status.isDirectory();
    return entry;
}

void DirectoryIterator::visitDirectory(iteratorEntry const & entry) {
    File directory(entry.name);
    qv::vector<IString> names;
    static_cast<void>(directory.readDir(names, true));
    for (IString const & name : names) {
        if (isSelfOrParent(name))
            continue;
        iteratorEntry child = examine(name);
        if (child.valid)
            entries_.push_back(std::move(child));
    }
}

void DirectoryIterator::next() {
    if (entries_.front().directory && !entries_.front().pruned)
        visitDirectory(entries_.front());
    entries_.pop_front();
}

} // namespace qvOS
