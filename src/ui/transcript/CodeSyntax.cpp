#include "ui/transcript/CodeSyntax.h"

#include <algorithm>

namespace varnel {
namespace {

/// Languages that share everything but their words.
enum class Family : quint8 {
    C,
    Script, ///< C's shape, and strings over several lines between backticks
    Rust,
    Php,
    Style,
    Hash, ///< comments begin with #
    Python,
    Shell,
    PowerShell,
    Sql,
    Dashes, ///< comments begin with --
    Json,
    Settings,
    Markup,
    Diff,
};

struct Language
{
    Family family;
    const char* names;
    const char* keywords;
};

// clang-format off
constexpr Language languages[] = {
    {Family::C, "c h cpp c++ cc cxx hpp hh objc objective-c arduino",
     "alignas alignof asm auto bool break case catch char char16_t char32_t char8_t class concept "
     "const consteval constexpr constinit const_cast continue co_await co_return co_yield decltype "
     "default delete do double dynamic_cast else enum explicit export extern false final float for "
     "friend goto if inline int int8_t int16_t int32_t int64_t long mutable namespace new noexcept "
     "nullptr NULL operator override private protected public register reinterpret_cast requires "
     "return short signed size_t sizeof static static_assert static_cast struct switch template "
     "this thread_local throw true try typedef typeid typename uint8_t uint16_t uint32_t uint64_t "
     "union unsigned using virtual void volatile wchar_t while #include #define #ifdef #ifndef "
     "#endif #if #else #elif #pragma #undef"},
    {Family::C, "java kt kotlin scala groovy",
     "abstract as assert boolean break by byte case catch char class companion const continue data "
     "default def do double else enum extends false final finally float for fun if implements "
     "import in init instanceof int interface internal is lateinit long native new null object "
     "open override package private protected public record return sealed short static String "
     "super suspend switch synchronized this throw throws trait true try typealias val var void "
     "volatile when while with yield"},
    {Family::C, "cs csharp c#",
     "abstract as async await base bool break byte case catch char checked class const continue "
     "decimal default delegate do double else enum event explicit extern false finally fixed float "
     "for foreach get goto if implicit in init int interface internal is lock long namespace new "
     "null object operator out override params partial private protected public readonly record "
     "ref return sealed set short sizeof static string struct switch this throw true try typeof "
     "uint ulong unchecked unsafe ushort using var virtual void volatile when where while with "
     "yield"},
    {Family::C, "swift dart",
     "actor any as associatedtype async await break case catch class continue default defer deinit "
     "do else enum extension fallthrough false fileprivate final for func get guard if import in "
     "init inout internal is late lazy let mutating nil null open operator override private "
     "protocol public repeat required rethrows return self Self set some static struct subscript "
     "super switch throw throws true try typealias var void weak where while with"},
    {Family::Script, "js javascript jsx mjs cjs ts typescript tsx vue svelte qml",
     "abstract any as async await boolean break case catch class const constructor continue "
     "debugger declare default delete do else enum export extends false finally for from function "
     "get if implements import in infer instanceof interface is keyof let module namespace never "
     "new null number object of package private property protected public readonly return set "
     "signal static string super switch symbol this throw true try type typeof undefined unknown "
     "var void while with yield"},
    {Family::Script, "go golang",
     "any bool break byte case chan complex64 complex128 const continue default defer else error "
     "fallthrough false float32 float64 for func go goto if import int int8 int16 int32 int64 "
     "interface iota map nil package range return rune select string struct switch true type uint "
     "uint8 uint16 uint32 uint64 var"},
    {Family::Rust, "rs rust zig",
     "as async await bool break char const continue crate dyn else enum extern f32 f64 false fn "
     "for i8 i16 i32 i64 i128 if impl in isize let loop match mod move mut Option pub ref Result "
     "return self Self static str String struct super trait true type u8 u16 u32 u64 u128 unsafe "
     "use usize Vec where while yield"},
    {Family::Php, "php",
     "abstract and array as break callable case catch class clone const continue declare default "
     "do echo else elseif enum extends false final finally fn for foreach function global if "
     "implements include instanceof interface isset list match namespace new null or print private "
     "protected public readonly require require_once return static switch this throw trait true "
     "try unset use var while xor yield"},
    {Family::Style, "css scss less",
     "important media import keyframes supports root from to and not"},
    {Family::Python, "py python python3 pyi starlark gdscript",
     "and as assert async await break case class continue def del elif else except False finally "
     "for from global if import in is lambda match None nonlocal not or pass raise return self "
     "True try type while with yield"},
    {Family::Shell, "sh bash zsh shell console shellsession fish ksh",
     "alias break case cd continue do done echo elif else esac eval exec exit export fi for "
     "function if in local printf read readonly return select set shift source sudo test then time "
     "trap unset until while"},
    {Family::Hash, "rb ruby elixir ex exs crystal",
     "alias and attr_accessor attr_reader begin break case class def defined defmodule defp do "
     "else elsif end ensure false fn for if in include loop module next nil not or private "
     "protected public raise redo require rescue retry return self super then true undef unless "
     "until when while yield"},
    {Family::Hash, "r julia jl perl pl",
     "abstract and begin break do else elseif elsif end export FALSE false for foreach function if "
     "import in let library local macro module my NA next NULL our print repeat return struct sub "
     "TRUE true try unless use using while"},
    {Family::PowerShell, "ps1 powershell pwsh",
     "begin break catch class continue do else elseif end exit finally for foreach function if in "
     "param process return switch throw try until while"},
    {Family::Shell, "make makefile mk cmake",
     "define else elseif endfunction endif endforeach export foreach function if ifdef ifeq ifndef "
     "ifneq include macro option project set"},
    {Family::Shell, "dockerfile docker containerfile",
     "ADD ARG AS CMD COPY ENTRYPOINT ENV EXPOSE FROM HEALTHCHECK LABEL RUN SHELL USER VOLUME "
     "WORKDIR"},
    {Family::Sql, "sql sqlite postgres postgresql mysql plsql psql",
     "add all alter and as asc avg begin between bigint boolean by cascade case char check column "
     "commit constraint count create cross database date default delete desc distinct drop else "
     "end exists false foreign from full group having if in index inner insert int integer into is "
     "join key left like limit max min not null numeric offset on or order outer over partition "
     "primary real references returning right rollback select set sum table text then timestamp to "
     "transaction true union unique update using values varchar view when where with"},
    {Family::Json, "json jsonc json5 ndjson jsonl",
     "true false null"},
    {Family::Settings, "yaml yml toml ini conf cfg properties env",
     "true false null yes no on off"},
    {Family::Dashes, "lua hs haskell elm",
     "and break case class data deriving do else elseif end false for function goto if import in "
     "instance let local module newtype nil not of or repeat return then true type until where "
     "while"},
    {Family::Markup, "html htm xml xhtml svg xaml rss plist",
     ""},
    {Family::Diff, "diff patch",
     ""},
};
// clang-format on

/// Words of one string, sorted.
std::vector<QLatin1String> words(const char* text)
{
    std::vector<QLatin1String> list;
    for (const auto word : QLatin1String(text).tokenize(QLatin1Char(' '), Qt::SkipEmptyParts))
        list.push_back(word);
    std::sort(list.begin(), list.end());
    return list;
}

CodeShape shapeOf(Family family)
{
    switch (family) {
    case Family::Style:
    case Family::Json:
    case Family::Settings:
        return CodeShape::Keyed;
    case Family::Markup:
        return CodeShape::Markup;
    case Family::Diff:
        return CodeShape::Diff;
    default:
        return CodeShape::Program;
    }
}

void setComments(CodeSyntax& syntax, Family family)
{
    switch (family) {
    case Family::Hash:
    case Family::Python:
    case Family::Shell:
    case Family::PowerShell:
    case Family::Settings:
        syntax.lineComments = {QLatin1String("#")};
        return;
    case Family::Markup:
        syntax.blockOpen = QLatin1String("<!--");
        syntax.blockClose = QLatin1String("-->");
        return;
    case Family::Diff:
        return;
    case Family::Dashes:
        syntax.lineComments = {QLatin1String("--")};
        return;
    case Family::Sql:
        syntax.lineComments = {QLatin1String("--")};
        break;
    default:
        syntax.lineComments = {QLatin1String("//")};
        break;
    }
    syntax.blockOpen = QLatin1String("/*");
    syntax.blockClose = QLatin1String("*/");
}

CodeSyntax syntaxOf(const Language& language)
{
    const Family family = language.family;
    CodeSyntax syntax;
    syntax.names = words(language.names);
    syntax.keywords = words(language.keywords);
    syntax.shape = shapeOf(family);
    setComments(syntax, family);
    // In Rust a single quote is as often a lifetime as a character.
    syntax.quotes = family == Family::Rust ? QLatin1String("\"") : QLatin1String("\"'");
    if (family == Family::Script)
        syntax.multilineQuote = QLatin1String("`");
    syntax.tripleQuotes = family == Family::Python;
    syntax.ignoresCase = family == Family::Sql || family == Family::PowerShell;
    syntax.variables = family == Family::Shell || family == Family::PowerShell || family == Family::Php;
    return syntax;
}

const std::vector<CodeSyntax>& syntaxes()
{
    static const std::vector<CodeSyntax> all = [] {
        std::vector<CodeSyntax> list;
        for (const Language& language : languages)
            list.push_back(syntaxOf(language));
        return list;
    }();
    return all;
}

} // namespace

const CodeSyntax* codeSyntax(QStringView name)
{
    for (const CodeSyntax& syntax : syntaxes()) {
        for (const QLatin1String& known : syntax.names) {
            if (name.compare(known, Qt::CaseInsensitive) == 0)
                return &syntax;
        }
    }
    return nullptr;
}

} // namespace varnel
