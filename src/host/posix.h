// What the POSIX sources share.
#pragma once

namespace mox {

void PosixLineMode();  // puts the terminal back as it was found

}  // namespace mox
