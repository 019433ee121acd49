#pragma once

namespace varnel {

/// Opens the folder at `path`, several names long, below the open folder `below`, in one call that follows no
/// symbolic link on the way. Yields a descriptor, or -1 with the reason in errno: ELOOP for a link, ENOSYS
/// where this system has no such call.
int openWholePath(int below, const char* path) noexcept;

} // namespace varnel
