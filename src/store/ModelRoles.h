// Which installed model suits which kind of work.
#pragma once

#include "store/ConversationKinds.h"
#include "store/OllamaModel.h"

#include <QString>

#include <optional>
#include <vector>

namespace varnel {

/// What a model is good at, told by its name alone; upper and lower case are the same.
bool isCodingModel(const QString& name);
bool isReasoningModel(const QString& name);
bool isVisionModel(const QString& name);

/// Whether a model is one for this kind of work. For chat that is every model without another speciality than
/// vision.
bool suits(WorkContext context, const QString& name);

/// The first number followed by "b" or "m" in a text such as "14.8B" or "llama3.2:3b", in billions. A number
/// of millions below 100 is taken for billions: that is what names with such a number mean. Nothing without
/// one.
std::optional<double> parameterCount(QStringView text);

/// How large a model is, in billions of parameters: what the server says, else what its name says, else 0.
double modelSize(const OllamaModel& model);

/// The model that is chosen for a kind of work.
struct BestModel
{
    QString name;
    /// False when no installed model is one for this work and the largest stands in.
    bool suited = false;

    bool operator==(const BestModel&) const = default;
};

/// The largest of the models that suit, else the largest of all; of equal ones the first. Nothing when there
/// are no models.
std::optional<BestModel> bestModel(WorkContext context, const std::vector<OllamaModel>& installed);

/// The status text after a kind of work was chosen.
QString workContextStatus(WorkContext context, const std::optional<BestModel>& best);

} // namespace varnel
