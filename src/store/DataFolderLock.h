#pragma once

#include "store/FileAccess.h"

#include <QString>

#include <optional>

namespace varnel {

/// The right to write into a data folder, held by one process at a time. The system takes it back when the
/// process ends, however it ends. It stands in the runtime folder of this computer: inside the data folder it
/// would be carried to others.
class DataFolderLock
{
public:
    /// Nothing when another process holds it. The folder must be there. Throws Error when locks cannot be
    /// kept at all.
    static std::optional<DataFolderLock> take(const QString& dataFolder);

private:
    explicit DataFolderLock(FileDescriptor file)
        : m_file(std::move(file))
    {}

    FileDescriptor m_file;
};

} // namespace varnel
