#include "RecordedReplies.h"

namespace varnel::test {

namespace {

constexpr auto gemini = RemoteProvider::Gemini;
constexpr auto claude = RemoteProvider::Claude;
constexpr auto openAi = RemoteProvider::OpenAi;
constexpr auto deepSeek = RemoteProvider::DeepSeek;
constexpr auto openRouter = RemoteProvider::OpenRouter;

void addClaude(std::vector<RecordedReply>& all)
{
    all.push_back(
        {"Claude, blocks", claude,
         R"({"type":"message","id":"x","content":[{"type":"thinking","thinking":"hm","signature":"s"},
                       {"type":"text","text":"Hel","citations":null},{"type":"server_tool_use","name":"web_search","input":{}},
                       {"type":"text","text":"lo"},7,null],"usage":{}})",
         "Hello", "hm", ""});
    all.push_back(
        {"Claude, sources", claude,
         R"({"content":[{"type":"web_search_tool_result","content":[
                          {"type":"web_search_result","url":" https://a.org ","title":" A\nB "},
                          {"url":"https://a.org","title":"again"},{"title":"no address"},{"url":"https://b.org","title":" "},
                          {"url":"https://c.org/x","title":"quoted"}]},
                       {"type":"text","text":"see https://c.org/x"}]})",
         "see https://c.org/x\n\nSources:\n- [A B](https://a.org)\n- [https://b.org](https://b.org)", "",
         ""});
    all.push_back({"Claude, failed search", claude,
                   R"({"content":[{"type":"web_search_tool_result","content":
                          {"type":"web_search_tool_result_error","error_code":"max_uses_exceeded"}},{"type":"text","text":"no"}]})",
                   "no", "", ""});
    all.push_back({"Claude, sources alone", claude,
                   R"({"content":[{"type":"web_search_tool_result","content":[{"url":"u","title":"t"}]}]})",
                   "\nSources:\n- [t](u)", "", ""});
    all.push_back({"Claude, empty", claude, R"({"content":[]})", "", "", ""});
}

void addGemini(std::vector<RecordedReply>& all)
{
    all.push_back(
        {"Gemini, parts", gemini,
         R"({"candidates":[{"content":{"role":"model","parts":[{"text":"plan","thought":true},{"text":"Hel"},
                       {"executableCode":{}},{"text":"lo","thoughtSignature":"x"}]}},{"content":{"parts":[{"text":"second"}]}}]})",
         "Hello", "plan", ""});
    all.push_back(
        {"Gemini, sources", gemini,
         R"({"candidates":[{"content":{"parts":[{"text":"a"}]},"groundingMetadata":{"groundingChunks":[
                       {"retrievedContext":{}},{"web":{"title":"no address"}},{"web":{"uri":"https://a.org"}},
                       {"web":{"uri":"https://b.org","title":"B"}}]}}]})",
         "a\n\nSources:\n- [https://a.org](https://a.org)\n- [B](https://b.org)", "", ""});
    all.push_back({"Gemini, lone surrogate", gemini,
                   R"({"candidates":[{"content":{"parts":[{"text":"\ud83d!"}]}}]})", "\xef\xbf\xbd!", "",
                   ""});
}

void addResponses(std::vector<RecordedReply>& all)
{
    all.push_back({"responses, items", openAi,
                   R"({"error":null,"output":[{"type":"web_search_call","status":"completed"},
                       {"type":"reasoning","content":[{"type":"reasoning_text","text":"hm"}],"summary":[]},
                       {"content":[{"text":"Hel"}]},{"type":"function_call","name":"x"},
                       {"type":"message","content":[{"type":"output_text","text":"lo","annotations":[
                           {"type":"url_citation","url":"https://a.org","title":"A"},{"type":"file_citation"}]},
                           {"type":"output_text","text":"!","annotations":null}]}]})",
                   "Hello!\n\nSources:\n- [A](https://a.org)", "hm", ""});
    all.push_back(
        {"responses, answer beside an error", openAi,
         R"({"error":{"message":"late"},"output":[{"content":[{"text":"a"},{"type":"refusal","refusal":"b"}]}]})",
         "a", "", ""});
}

void addCompletions(std::vector<RecordedReply>& all)
{
    all.push_back({"completions", openAi,
                   "\n\n \n"
                   R"({"choices":[{"message":{"role":"assistant","content":"Hello","refusal":null}}]})",
                   "Hello", "", ""});
    all.push_back(
        {"completions, empty text", deepSeek, R"({"choices":[{"message":{"content":""}}]})", "", "", ""});
    all.push_back(
        {"completions, thinking alone", deepSeek,
         R"({"choices":[{"finish_reason":"length","message":{"content":"","reasoning_content":"hm"}}]})", "",
         "hm", ""});
    all.push_back({"completions, empty end", deepSeek,
                   R"({"choices":[{"finish_reason":"stop","message":{"content":""}}]})", "", "", ""});
    all.push_back({"completions, no output", openAi,
                   R"({"output":null,"choices":[{"message":{"content":"a"}}]})", "a", "", ""});
    all.push_back(
        {"completions, list of parts", openRouter,
         R"({"choices":[{"message":{"content":[{"type":"text","text":"Hel"},{"type":"image"},{"text":"lo"}],
                       "reasoning":"hm"}}]})",
         "Hello", "hm", ""});
    all.push_back({"completions, tool calls", deepSeek,
                   R"({"choices":[{"message":{"content":null,"reasoning_content":"hm","tool_calls":[
                       {"id":"a","type":"function","function":{"name":"web_search","arguments":"{\"query\":\"q\"}"}},
                       {"type":"custom"},"?",{"function":{"name":"web_fetch","arguments":{"url":"u"}}},
                       {"id":"c","function":{}}]}}]})",
                   "", "hm", R"(a web_search {"query":"q"};  web_fetch {"url":"u"}; c  )"});
    all.push_back({"completions, no tool calls", openAi,
                   R"({"choices":[{"message":{"content":"a","tool_calls":[]}}]})", "a", "", ""});
}

} // namespace

std::vector<RecordedReply> recordedAnswers()
{
    std::vector<RecordedReply> all;
    addClaude(all);
    addGemini(all);
    addResponses(all);
    addCompletions(all);
    return all;
}

std::vector<RecordedReply> recordedRefusals()
{
    const auto row = [](const char* name, RemoteProvider provider, const char* body, const char* reason) {
        return RecordedReply{name, provider, body, reason, {}, {}};
    };
    return {
        row("Claude, error", claude, R"({"type":"error","error":{"type":"x","message":"overloaded"}})",
            "overloaded"),
        row("Claude, no blocks", claude, R"({"content":[],"stop_reason":"refusal"})", "refusal"),
        row("Claude, error beside no blocks", claude,
            R"({"content":[],"stop_reason":"x","error":{"message":"overloaded"}})", "overloaded"),
        row("Claude, text", claude, R"({"content":"text"})", ""),
        row("Gemini, blocked prompt", gemini, R"({"promptFeedback":{"blockReason":"SAFETY"}})", "SAFETY"),
        row("Gemini, no candidates", gemini, R"({"candidates":[]})", ""),
        row("Gemini, no content", gemini,
            R"({"candidates":[{"finishReason":"RECITATION","finishMessage":"no"}]})", "RECITATION: no"),
        row("Gemini, no parts", gemini,
            R"({"candidates":[{"content":{"role":"model"},"finishReason":"MAX_TOKENS"}]})", "MAX_TOKENS"),
        row("Gemini, empty parts", gemini,
            R"({"candidates":[{"content":{"parts":[]},"finishReason":"SAFETY"}]})", "SAFETY"),
        row("Gemini, empty text", gemini,
            R"({"candidates":[{"content":{"parts":[{"text":""}]},"finishReason":"RECITATION"}]})",
            "RECITATION"),
        row("responses, refusal", openAi,
            R"({"output":[{"type":"message","content":[{"type":"refusal","refusal":"I cannot."}]}]})",
            "I cannot."),
        row("responses, failed", openAi,
            R"({"status":"failed","error":{"code":"server_error","message":"m"},"output":[]})", "m"),
        row("completions, refusal", openAi,
            R"({"choices":[{"message":{"content":null,"refusal":"I cannot."}}]})", "I cannot."),
        row("completions, filtered", openAi,
            R"({"choices":[{"finish_reason":"content_filter","message":{"content":""}}]})", "content_filter"),
        row("completions, null", deepSeek, R"({"choices":[{"message":{"content":null}}]})", ""),
        row("completions, no choices", openRouter,
            R"({"error":{"code":502,"message":"key secret-key is bad"}})",
            "key \xe2\x80\xa2\xe2\x80\xa2\xe2\x80\xa2 is bad"),
        row("completions, error text", openRouter, R"({"error":"plain"})", "plain"),
        row("completions, error without message", openRouter, R"({"error":{"code":502}})", R"({"code":502})"),
        row("completions, error in the choice", openRouter,
            R"({"choices":[{"finish_reason":"error","error":{"message":"m"},"message":{"content":""}}]})",
            "m"),
        row("no object", openAi, "[]", "expected an object, found an array"),
        row("HTML", gemini, "<html>", "not valid JSON (line 1, column 1: expected a value, found \"<\")"),
        row("empty", claude, "", "not valid JSON (line 1, column 1: the text is empty)"),
    };
}

} // namespace varnel::test
