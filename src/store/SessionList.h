#pragma once

#include "store/ChatSession.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <vector>

namespace varnel {

/// The conversations in their order. A copy is cheap however long they are, because it shares them; changing
/// one copies that one if it is shared. So the whole can be handed to another thread at every change.
class SessionList
{
public:
    class Iterator
    {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = ChatSession;
        using difference_type = std::ptrdiff_t;
        using pointer = const ChatSession*;
        using reference = const ChatSession&;
        using Place = std::vector<std::shared_ptr<ChatSession>>::const_iterator;

        Iterator() = default;
        explicit Iterator(Place place)
            : m_place(place)
        {}
        reference operator*() const { return **m_place; }
        pointer operator->() const { return m_place->get(); }
        Iterator& operator++() { return *this += 1; }
        Iterator operator++(int) { return Iterator(m_place++); }
        Iterator& operator--() { return *this += -1; }
        Iterator& operator+=(difference_type steps)
        {
            m_place += steps;
            return *this;
        }
        Iterator operator+(difference_type steps) const { return Iterator(m_place + steps); }
        difference_type operator-(const Iterator& other) const { return m_place - other.m_place; }
        bool operator==(const Iterator&) const = default;
        auto operator<=>(const Iterator&) const = default;

    private:
        Place m_place;
    };

    SessionList() = default;
    SessionList(std::initializer_list<ChatSession> sessions)
    {
        for (const ChatSession& session : sessions)
            append(session);
    }
    explicit SessionList(std::vector<ChatSession> sessions)
    {
        m_sessions.reserve(sessions.size());
        for (ChatSession& session : sessions)
            append(std::move(session));
    }

    std::size_t size() const { return m_sessions.size(); }
    bool empty() const { return m_sessions.empty(); }
    Iterator begin() const { return Iterator(m_sessions.begin()); }
    Iterator end() const { return Iterator(m_sessions.end()); }
    const ChatSession& operator[](std::size_t index) const { return *m_sessions[index]; }
    const ChatSession& front() const { return *m_sessions.front(); }

    /// The place of a conversation; size() if there is none of that identifier.
    std::size_t indexOf(const QUuid& id) const
    {
        const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                        [&id](const auto& session) { return session->id == id; });
        return static_cast<std::size_t>(found - m_sessions.begin());
    }

    /// A conversation to be changed. The reference is valid until the list is copied, changed or gone.
    ChatSession& edit(std::size_t index)
    {
        std::shared_ptr<ChatSession>& session = m_sessions[index];
        if (session.use_count() == 1)
            // The last reader on another thread has finished before it let go of the conversation.
            std::atomic_thread_fence(std::memory_order_acquire);
        else
            session = std::make_shared<ChatSession>(*session);
        return *session;
    }
    void append(ChatSession session)
    {
        m_sessions.push_back(std::make_shared<ChatSession>(std::move(session)));
    }
    void insert(std::size_t index, ChatSession session)
    {
        m_sessions.insert(place(index), std::make_shared<ChatSession>(std::move(session)));
    }
    void remove(std::size_t index) { m_sessions.erase(place(index)); }
    /// Moves a conversation so that it stands at `to` afterwards.
    void move(std::size_t from, std::size_t to)
    {
        if (from < to)
            std::rotate(place(from), place(from + 1), place(to + 1));
        else
            std::rotate(place(to), place(from), place(from + 1));
    }
    /// Puts pinned conversations first and, among equals, those changed last; otherwise the order stays.
    void sort();

    friend bool operator==(const SessionList& a, const SessionList& b)
    {
        return std::equal(a.m_sessions.begin(), a.m_sessions.end(), b.m_sessions.begin(), b.m_sessions.end(),
                          [](const auto& x, const auto& y) { return x == y || *x == *y; });
    }

private:
    using Sessions = std::vector<std::shared_ptr<ChatSession>>;

    Sessions::iterator place(std::size_t index)
    {
        return m_sessions.begin() + static_cast<std::ptrdiff_t>(index);
    }

    Sessions m_sessions;
};

} // namespace varnel
