#include "RecordedRequests.h"

#include <QJsonDocument>

namespace varnel::test {

namespace {

ProviderMessage user(const char* text, std::vector<PromptMedia> media = {})
{
    return {.role = ChatRole::User, .text = QString::fromUtf8(text), .media = std::move(media)};
}

ProviderMessage said(ChatRole role, const char* text)
{
    return {.role = role, .text = QString::fromUtf8(text), .media = {}};
}

const PromptMedia png{.mime = QStringLiteral("image/png"), .data = QByteArray("\x00\xff?", 3)};
const PromptMedia pdf{.mime = QStringLiteral("application/pdf"), .data = "%PDF"};

ProviderTurn turn(RemoteProvider provider, const char* model, std::vector<ProviderMessage> messages)
{
    ProviderTurn turn;
    turn.provider = provider;
    turn.model = QString::fromUtf8(model);
    turn.key = QStringLiteral(" secret-key\n");
    turn.messages = std::move(messages);
    turn.temperature = 0.7;
    return turn;
}

ProviderTurn plain(RemoteProvider provider, const char* model)
{
    return turn(provider, model, {user("hi")});
}

/// System text, an older exchange, what is not sent, and attachments with and without a text.
ProviderTurn full(RemoteProvider provider, const char* model)
{
    ProviderTurn turn =
        test::turn(provider, model,
                   {said(ChatRole::System, "\nbe kind "), user("1"), said(ChatRole::Assistant, ""),
                    said(ChatRole::Assistant, "2"), user(" \n"), user("", {pdf}), user("3", {png, pdf})});
    turn.systemPrompt = QStringLiteral(" be brief\n");
    return turn;
}

ProviderTurn searching(ProviderTurn turn)
{
    turn.search = ProviderSearch::Own;
    return turn;
}

/// The model asked for three calls, two were executed; then it asked for one more in its own way.
ProviderTurn withTools(ProviderTurn turn)
{
    turn.systemPrompt = QStringLiteral("be brief");
    turn.toolGuidance = QStringLiteral("use tools");
    turn.tools =
        QJsonDocument::fromJson(
            R"([{"type":"function","function":{"name":"web_fetch","parameters":{"type":"object"}}}])")
            .array();
    const auto message = [](const char* json) { return QJsonDocument::fromJson(json).object(); };
    turn.toolRounds = {
        {message(R"({"role":"assistant","content":null,"reasoning_content":"hm","tool_calls":[
             {"id":"a","index":0,"type":"function","function":{"name":"web_fetch","arguments":"{\"url\":1}"}},
             {"id":"b","type":"function","function":{"name":"nope","arguments":"not json"}},
             {"id":"c","type":"function","function":{"name":"web_fetch","arguments":"{}"}}]})"),
         {QStringLiteral("page"), QStringLiteral("Unknown tool nope")}},
        {message(
             R"({"content":"more","tool_calls":[{"function":{"name":"web_fetch","arguments":{"url":"u"}}}]})"),
         {QStringLiteral("page 2")}},
        {message(
             R"({"content":"dropped","tool_calls":[{"id":"d","function":{"name":"x","arguments":"{}"}}]})"),
         {}},
    };
    return turn;
}

constexpr const char* toolsBody =
    R"({"model":"m","temperature":0.7,"stream":false,"messages":[
        {"role":"system","content":"use tools"},{"role":"system","content":"be brief"},{"role":"user","content":"hi"},
        {"role":"assistant","content":null,"reasoning_content":"hm","tool_calls":[
            {"id":"a","index":0,"type":"function","function":{"name":"web_fetch","arguments":"{\"url\":1}"}},
            {"id":"b","type":"function","function":{"name":"nope","arguments":"not json"}}]},
        {"role":"tool","tool_call_id":"a","content":"page"},
        {"role":"tool","tool_call_id":"b","content":"Unknown tool nope"},
        {"role":"assistant","content":"more","tool_calls":[
            {"id":"call_1_0","type":"function","function":{"name":"web_fetch","arguments":"{\"url\":\"u\"}"}}]},
        {"role":"tool","tool_call_id":"call_1_0","content":"page 2"}],
        "tools":[{"type":"function","function":{"name":"web_fetch","parameters":{"type":"object"}}}]})";

constexpr const char* plainCompletions =
    R"({"model":"m","temperature":0.7,"messages":[{"role":"user","content":"hi"}],"stream":false})";

constexpr const char* fullCompletions =
    R"({"model":"m","temperature":0.7,"stream":false,"messages":[
        {"role":"system","content":"be brief\nbe kind"},
        {"role":"user","content":"1"},{"role":"assistant","content":"2"},
        {"role":"user","content":[
            {"type":"file","file":{"filename":"document.pdf","file_data":"data:application/pdf;base64,JVBERg=="}}]},
        {"role":"user","content":[{"type":"text","text":"3"},
            {"type":"image_url","image_url":{"url":"data:image/png;base64,AP8/"}},
            {"type":"file","file":{"filename":"document.pdf","file_data":"data:application/pdf;base64,JVBERg=="}}]}]})";

void addGemini(std::vector<RecordedRequest>& all)
{
    const auto provider = RemoteProvider::Gemini;
    all.push_back(
        {"Gemini", plain(provider, "m"), "/v1beta/models/m:generateContent",
         R"({"contents":[{"role":"user","parts":[{"text":"hi"}]}],"generationConfig":{"temperature":0.7}})"});
    all.push_back({"Gemini, full", searching(full(provider, "a/../b?c#d e")),
                   "/v1beta/models/a%2F..%2Fb%3Fc%23d%20e:generateContent",
                   R"({"system_instruction":{"parts":[{"text":"be brief\nbe kind"}]},"contents":[
                       {"role":"user","parts":[{"text":"1"}]},{"role":"model","parts":[{"text":"2"}]},
                       {"role":"user","parts":[{"inline_data":{"mime_type":"application/pdf","data":"JVBERg=="}}]},
                       {"role":"user","parts":[{"text":"3"},{"inline_data":{"mime_type":"image/png","data":"AP8/"}},
                           {"inline_data":{"mime_type":"application/pdf","data":"JVBERg=="}}]}],
                       "generationConfig":{"temperature":0.7},"tools":[{"google_search":{}}]})"});
}

void addClaude(std::vector<RecordedRequest>& all)
{
    const auto provider = RemoteProvider::Claude;
    all.push_back(
        {"Claude", plain(provider, "m"), "/v1/messages",
         R"({"model":"m","max_tokens":4096,"temperature":0.7,"messages":[{"role":"user","content":"hi"}]})"});
    all.push_back(
        {"Claude, full", searching(full(provider, "m")), "/v1/messages",
         R"({"model":"m","max_tokens":4096,"temperature":0.7,"system":"be brief\nbe kind","messages":[
                       {"role":"user","content":"1"},{"role":"assistant","content":"2"},
                       {"role":"user","content":[
                           {"type":"document","source":{"type":"base64","media_type":"application/pdf","data":"JVBERg=="}}]},
                       {"role":"user","content":[
                           {"type":"image","source":{"type":"base64","media_type":"image/png","data":"AP8/"}},
                           {"type":"document","source":{"type":"base64","media_type":"application/pdf","data":"JVBERg=="}},
                           {"type":"text","text":"3"}]}],
                       "tools":[{"type":"web_search_20250305","name":"web_search","max_uses":5}]})"});
}

void addOpenAi(std::vector<RecordedRequest>& all)
{
    const auto provider = RemoteProvider::OpenAi;
    all.push_back({"OpenAI", plain(provider, "m"), "/v1/chat/completions", plainCompletions});
    all.push_back({"OpenAI, full", full(provider, "m"), "/v1/chat/completions", fullCompletions});
    all.push_back({"OpenAI, tools", withTools(plain(provider, "m")), "/v1/chat/completions", toolsBody});
    all.push_back(
        {"OpenAI, own search", searching(plain(provider, "m")), "/v1/responses",
         R"({"model":"m","temperature":0.7,"input":[{"role":"user","content":"hi"}],"tools":[{"type":"web_search"}]})"});
    all.push_back({"OpenAI, own search, full", searching(full(provider, "m")), "/v1/responses",
                   R"({"model":"m","temperature":0.7,"instructions":"be brief\nbe kind","input":[
                       {"role":"user","content":"1"},{"role":"assistant","content":"2"},
                       {"role":"user","content":[
                           {"type":"input_file","filename":"document.pdf","file_data":"data:application/pdf;base64,JVBERg=="}]},
                       {"role":"user","content":[{"type":"input_text","text":"3"},
                           {"type":"input_image","detail":"auto","image_url":"data:image/png;base64,AP8/"},
                           {"type":"input_file","filename":"document.pdf","file_data":"data:application/pdf;base64,JVBERg=="}]}],
                       "tools":[{"type":"web_search"}]})"});
}

void addOthers(std::vector<RecordedRequest>& all)
{
    all.push_back({"DeepSeek", plain(RemoteProvider::DeepSeek, "m"), "/chat/completions", plainCompletions});
    all.push_back(
        {"DeepSeek, full", full(RemoteProvider::DeepSeek, "m"), "/chat/completions", fullCompletions});
    all.push_back(
        {"DeepSeek, tools", withTools(plain(RemoteProvider::DeepSeek, "m")), "/chat/completions", toolsBody});
    all.push_back(
        {"OpenRouter", plain(RemoteProvider::OpenRouter, "m"), "/api/v1/chat/completions", plainCompletions});
    // It has no search of its own, so asking for it changes nothing.
    all.push_back({"OpenRouter, full", searching(full(RemoteProvider::OpenRouter, "m")),
                   "/api/v1/chat/completions", fullCompletions});
    all.push_back({"OpenRouter, tools", withTools(plain(RemoteProvider::OpenRouter, "m")),
                   "/api/v1/chat/completions", toolsBody});
}

// A schema is an example: "string" and the like name the kind of a value, a key that ends in "?" may be
// missing, an array lists the forms its elements may have, and a list under "|" the forms of one value.
constexpr const char* claudeSchema =
    R"({"model":"string","max_tokens":"integer","temperature?":"number","system?":"text","messages":[
        {"role":"user or assistant","content":{"|":["text",[
            {"type":"=text","text":"text"},
            {"type":"=image","source":{"type":"=base64","media_type":"image type","data":"base64"}},
            {"type":"=document","source":{"type":"=base64","media_type":"=application/pdf","data":"base64"}}]]}}],
        "tools?":[{"type":"=web_search_20250305","name":"=web_search","max_uses?":"integer"}]})";

constexpr const char* geminiSchema =
    R"({"contents":[{"role":"user or model","parts":[{"text":"text"},
            {"inline_data":{"mime_type":"string","data":"base64"}}]}],
        "system_instruction?":{"parts":[{"text":"text"}]},"generationConfig?":{"temperature":"number"},
        "tools?":[{"google_search":{}}]})";

constexpr const char* responsesSchema =
    R"({"model":"string","temperature?":"number","instructions?":"text","input":[
        {"role":"=assistant","content":"text"},
        {"role":"=user","content":{"|":["text",[{"type":"=input_text","text":"text"},
            {"type":"=input_image","image_url":"data URL","detail":"=auto"},
            {"type":"=input_file","filename":"string","file_data":"data URL"}]]}}],
        "tools?":[{"type":"=web_search"}]})";

constexpr const char* completionsSchema =
    R"({"model":"string","temperature?":"number","stream?":"boolean","messages":[
        {"role":"=system","content":"text"},
        {"role":"=assistant","content":"text"},
        {"role":"=assistant","content":"string or null","reasoning_content?":"string","tool_calls":[
            {"id":"text","index?":"integer","type":"=function","function":{"name":"text","arguments":"string"}}]},
        {"role":"=tool","tool_call_id":"text","content":"string"},
        {"role":"=user","content":{"|":["text",[{"type":"=text","text":"text"},
            {"type":"=image_url","image_url":{"url":"data URL"}},
            {"type":"=file","file":{"filename":"string","file_data":"data URL"}}]]}}],
        "tools?":[{"type":"=function","function":{"name":"text","description?":"string","parameters":"object"}}]})";

bool isOfKind(const QJsonValue& value, const QString& kind)
{
    const QString text = value.toString();
    if (kind.startsWith(u'='))
        return value.isString() && text == kind.sliced(1);
    if (kind == QLatin1String("number"))
        return value.isDouble();
    if (kind == QLatin1String("integer"))
        return value.isDouble() && value.toInteger(-1) >= 0;
    if (kind == QLatin1String("boolean"))
        return value.isBool();
    if (kind == QLatin1String("object"))
        return value.isObject();
    if (kind == QLatin1String("string or null") && value.isNull())
        return true;
    if (kind == QLatin1String("text"))
        return !text.trimmed().isEmpty();
    if (kind == QLatin1String("base64"))
        return !text.isEmpty() && text.size() % 4 == 0;
    if (kind == QLatin1String("data URL"))
        return text.startsWith(QLatin1String("data:")) && text.contains(QLatin1String(";base64,"));
    if (kind == QLatin1String("image type"))
        return text.startsWith(QLatin1String("image/"));
    if (kind.contains(QLatin1String(" or ")) && kind != QLatin1String("string or null"))
        return kind.split(QStringLiteral(" or ")).contains(text);
    return value.isString();
}

bool matches(const QJsonValue& value, const QJsonValue& schema);

bool matchesAny(const QJsonValue& value, const QJsonArray& schemas)
{
    return std::any_of(schemas.begin(), schemas.end(),
                       [&value](const QJsonValue& schema) { return matches(value, schema); });
}

bool matchesObject(const QJsonObject& object, const QJsonObject& schema)
{
    qsizetype known = 0;
    for (auto member = schema.begin(); member != schema.end(); ++member) {
        const bool isOptional = member.key().endsWith(u'?');
        const auto found = object.constFind(isOptional ? member.key().chopped(1) : member.key());
        if (found == object.constEnd() ? !isOptional : !matches(*found, member.value()))
            return false;
        known += found == object.constEnd() ? 0 : 1;
    }
    return known == object.size();
}

bool matches(const QJsonValue& value, const QJsonValue& schema)
{
    if (schema.isString())
        return isOfKind(value, schema.toString());
    if (schema.isArray()) {
        const QJsonArray elements = value.toArray();
        const QJsonArray forms = schema.toArray();
        return !elements.isEmpty() &&
               std::all_of(elements.begin(), elements.end(),
                           [&forms](const QJsonValue& element) { return matchesAny(element, forms); });
    }
    const QJsonObject object = schema.toObject();
    if (object.contains(QStringLiteral("|")))
        return matchesAny(value, object.value(QStringLiteral("|")).toArray());
    return value.isObject() && matchesObject(value.toObject(), object);
}

const char* schemaOf(const ProviderTurn& turn)
{
    if (turn.provider == RemoteProvider::Gemini)
        return geminiSchema;
    if (turn.provider == RemoteProvider::Claude)
        return claudeSchema;
    return turn.provider == RemoteProvider::OpenAi && turn.search == ProviderSearch::Own ? responsesSchema
                                                                                         : completionsSchema;
}

} // namespace

std::vector<RecordedRequest> recordedRequests()
{
    std::vector<RecordedRequest> all;
    addGemini(all);
    addClaude(all);
    addOpenAi(all);
    addOthers(all);
    return all;
}

QByteArray schemaViolation(const ProviderTurn& turn, const QByteArray& body)
{
    const QJsonObject schema = QJsonDocument::fromJson(schemaOf(turn)).object();
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    if (schema.isEmpty())
        return "the schema is no JSON";
    for (auto member = object.begin(); member != object.end(); ++member) {
        const auto wanted = schema.contains(member.key()) ? member.key() : member.key() + u'?';
        if (!matches(member.value(), schema.value(wanted)))
            return member.key().toUtf8() + " is not of the form";
    }
    return matchesObject(object, schema) ? QByteArray() : QByteArray("a key is missing");
}

} // namespace varnel::test
