#include "Base/OS/qvOSDirectoryIterator.h"

#include "Base/OS/Internal/LocalFileTransport.h"
#include "Base/OS/qvOSFile.h"
#include "Base/Strings/Internal/WideText.h"

#include <utility>

namespace qvOS {

using qvString::IString;
using qvString::WideView;

namespace {

bool isSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// Whether the path of an entry ends in "." or "..", however short the path of its directory is.
bool isSelfOrParent(IString const & path, wchar_t separator) {
    WideView name(path.asWChar(), path.length());
    name.remove_prefix(name.rfind(separator) + 1);
    return name == WideView(L".") || name == WideView(L"..");
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
    qv::vector<IString> paths;
    if (auto * const local = dynamic_cast<LocalFileTransport *>(directory.getTransport()))
        static_cast<void>(local->readOwnDir(paths, true));
    else
        static_cast<void>(directory.readDir(paths, true));
    for (IString const & path : paths) {
        if (isSelfOrParent(path, directory.getSeparator()))
            continue;
        iteratorEntry child = examine(path);
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
