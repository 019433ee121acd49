#pragma once

#include <QString>

namespace varnel::practice {

/// The sentence that every reply carries, so that nobody takes one for a model's words.
QString practiceNote();

/// A long text that uses everything Markdown can show.
QString markdownTour();
/// Prose and fenced blocks in several languages.
QString codeReply();
/// Prose and one fenced block for each file of a small project.
QString projectReply();
/// Several thousand words in sections.
QString longReply();

} // namespace varnel::practice
