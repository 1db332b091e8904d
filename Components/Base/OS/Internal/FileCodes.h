// The codes of File::getError() that the library itself gives.

#ifndef FileCodes_h
#define FileCodes_h

namespace qvOS::code {

enum FileCode {
    notImplemented = 1,
    fileExists = 2,
    endOfFile = 3,
    ioProblem = 4,
    noOverwrite = 7,
    fileIsNotOpen = 8,
    fileIsOpen = 9,
    notADirectory = 10,
    pathTooLong = 12,
    notEmpty = 13,
    noSuchFile = 18
};

} // namespace qvOS::code

#endif
