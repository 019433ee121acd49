#pragma once

#include <unistd.h>

#include <utility>

namespace varnel {

/// An open file or folder of the system, closed by its owner's end.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    /// Takes over what open() answered; a negative number is none.
    explicit FileDescriptor(int number) noexcept
        : m_number(number)
    {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor()
    {
        if (isOpen())
            ::close(m_number);
    }

    bool isOpen() const noexcept { return m_number >= 0; }
    int get() const noexcept { return m_number; }

private:
    int m_number = -1;
};

} // namespace varnel
