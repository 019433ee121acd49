#pragma once

#include "base/HttpClient.h"
#include "ollama/OllamaError.h"

namespace varnel {

/// The error that an answer with a status outside 200 to 299 stands for: the server's own text if it is
/// Ollama's JSON, otherwise that something else answered, with what it said. Reads at most 1 MiB of the body;
/// the response must outlive the task.
Task<OllamaError> errorOfStatus(HttpResponse& response);

} // namespace varnel
