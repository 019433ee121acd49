#pragma once

#include "store/DataFile.h"

#include <QString>
#include <QUuid>

#include <map>
#include <optional>
#include <vector>

namespace varnel {

/// What stands in the composer of a conversation and was not sent yet.
struct Draft
{
    QString text;
    /// The library items that are attached, in the order they were.
    std::vector<QUuid> attachments;

    bool operator==(const Draft&) const = default;

    bool isEmpty() const { return text.isEmpty() && attachments.empty(); }
};

/// The drafts by conversation.
using Drafts = std::map<QUuid, Draft>;

Drafts decodeDrafts(JsonValue value);
/// Empty drafts are left out.
void writeDrafts(JsonWriter& writer, const Drafts& drafts);

/// Keeps the drafts of a data folder. It belongs to no thread, but only one may use it at a time.
class DraftStore
{
public:
    explicit DraftStore(const QString& dataFolder)
        : m_file(dataFolder + QStringLiteral("/drafts.json"))
    {}

    /// Throws Error when the file cannot be read; the next save() then renames it.
    Drafts load() { return m_file.load(decodeDrafts).value_or(Drafts()); }
    /// Throws Error. Yields what had to be kept beside the file.
    std::optional<SetAside> save(const Drafts& drafts)
    {
        return m_file.save([&drafts](JsonWriter& writer) { writeDrafts(writer, drafts); });
    }

private:
    DataFile m_file;
};

} // namespace varnel
