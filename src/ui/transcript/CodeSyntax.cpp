#include "ui/transcript/CodeSyntax.h"

#include <algorithm>

namespace varnel {
namespace {

/// Words of one string, sorted.
std::vector<QLatin1String> words(const char* text)
{
    std::vector<QLatin1String> list;
    for (const QLatin1String rest(text);
         const auto word : rest.tokenize(QLatin1Char(' '), Qt::SkipEmptyParts))
        list.push_back(word);
    std::sort(list.begin(), list.end());
    return list;
}

CodeSyntax cLike(const char* names, const char* keywords)
{
    CodeSyntax syntax;
    syntax.names = words(names);
    syntax.keywords = words(keywords);
    syntax.lineComments = {QLatin1String("//")};
    syntax.blockOpen = QLatin1String("/*");
    syntax.blockClose = QLatin1String("*/");
    syntax.quotes = QLatin1String("\"'");
    return syntax;
}

CodeSyntax hashLike(const char* names, const char* keywords)
{
    CodeSyntax syntax;
    syntax.names = words(names);
    syntax.keywords = words(keywords);
    syntax.lineComments = {QLatin1String("#")};
    syntax.quotes = QLatin1String("\"'");
    return syntax;
}

void addCFamily(std::vector<CodeSyntax>& list)
{
    list.push_back(cLike(
        "c h cpp c++ cc cxx hpp hh objc objective-c arduino",
        "alignas alignof asm auto bool break case catch char char16_t char32_t char8_t class concept const "
        "consteval constexpr constinit const_cast continue co_await co_return co_yield decltype default "
        "delete "
        "do double dynamic_cast else enum explicit export extern false final float for friend goto if inline "
        "int int8_t int16_t int32_t int64_t long mutable namespace new noexcept nullptr NULL operator "
        "override "
        "private protected public register reinterpret_cast requires return short signed size_t sizeof "
        "static "
        "static_assert static_cast struct switch template this thread_local throw true try typedef typeid "
        "typename uint8_t uint16_t uint32_t uint64_t union unsigned using virtual void volatile wchar_t "
        "while "
        "#include #define #ifdef #ifndef #endif #if #else #elif #pragma #undef"));
    list.push_back(cLike(
        "java kt kotlin scala groovy",
        "abstract as assert boolean break by byte case catch char class companion const continue data "
        "default "
        "def do double else enum extends false final finally float for fun if implements import in init "
        "instanceof int interface internal is lateinit long native new null object open override package "
        "private protected public record return sealed short static String super suspend switch synchronized "
        "this throw throws trait true try typealias val var void volatile when while with yield"));
    list.push_back(cLike(
        "cs csharp c#",
        "abstract as async await base bool break byte case catch char checked class const continue decimal "
        "default delegate do double else enum event explicit extern false finally fixed float for foreach "
        "get "
        "goto if implicit in init int interface internal is lock long namespace new null object operator out "
        "override params partial private protected public readonly record ref return sealed set short sizeof "
        "static string struct switch this throw true try typeof uint ulong unchecked unsafe ushort using var "
        "virtual void volatile when where while with yield"));
    list.push_back(cLike(
        "swift dart",
        "actor any as associatedtype async await break case catch class continue default defer deinit do "
        "else "
        "enum extension fallthrough false fileprivate final for func get guard if import in init inout "
        "internal "
        "is late lazy let mutating nil null open operator override private protocol public repeat required "
        "rethrows return self Self set some static struct subscript super switch throw throws true try "
        "typealias var void weak where while with"));
    CodeSyntax script = cLike(
        "js javascript jsx mjs cjs ts typescript tsx vue svelte qml",
        "abstract any as async await boolean break case catch class const constructor continue debugger "
        "declare "
        "default delete do else enum export extends false finally for from function get if implements import "
        "in "
        "infer instanceof interface is keyof let module namespace never new null number object of package "
        "private property protected public readonly return set signal static string super switch symbol this "
        "throw true try type typeof undefined unknown var void while with yield");
    script.multilineQuote = QLatin1String("`");
    list.push_back(script);
    CodeSyntax go = cLike(
        "go golang",
        "any bool break byte case chan complex64 complex128 const continue default defer else error "
        "fallthrough "
        "false float32 float64 for func go goto if import int int8 int16 int32 int64 interface iota map nil "
        "package range return rune select string struct switch true type uint uint8 uint16 uint32 uint64 "
        "var");
    go.multilineQuote = QLatin1String("`");
    list.push_back(go);
    CodeSyntax rust = cLike(
        "rs rust zig",
        "as async await bool break char const continue crate dyn else enum extern f32 f64 false fn for i8 "
        "i16 "
        "i32 i64 i128 if impl in isize let loop match mod move mut Option pub ref Result return self Self "
        "static "
        "str String struct super trait true type u8 u16 u32 u64 u128 unsafe use usize Vec where while yield");
    rust.quotes = QLatin1String("\""); // a single quote is as often a lifetime as a character
    list.push_back(rust);
    CodeSyntax php = cLike(
        "php",
        "abstract and array as break callable case catch class clone const continue declare default do echo "
        "else "
        "elseif enum extends false final finally fn for foreach function global if implements include "
        "instanceof "
        "interface isset list match namespace new null or print private protected public readonly require "
        "require_once return static switch this throw trait true try unset use var while xor yield");
    php.variables = true;
    list.push_back(php);
    list.push_back(cLike("css scss less", "important media import keyframes supports root from to and not"));
    list.back().shape = CodeShape::Keyed;
}

void addScripts(std::vector<CodeSyntax>& list)
{
    CodeSyntax python = hashLike(
        "py python python3 pyi starlark gdscript",
        "and as assert async await break case class continue def del elif else except False finally for from "
        "global if import in is lambda match None nonlocal not or pass raise return self True try type while "
        "with yield");
    python.tripleQuotes = true;
    list.push_back(python);
    CodeSyntax shell = hashLike("sh bash zsh shell console shellsession fish ksh",
                                "alias break case cd continue do done echo elif else esac eval exec exit "
                                "export fi for function if in "
                                "local printf read readonly return select set shift source sudo test then "
                                "time trap unset until while");
    shell.variables = true;
    list.push_back(shell);
    list.push_back(hashLike(
        "rb ruby elixir ex exs crystal",
        "alias and attr_accessor attr_reader begin break case class def defined defmodule defp do else elsif "
        "end "
        "ensure false fn for if in include loop module next nil not or private protected public raise redo "
        "require rescue retry return self super then true undef unless until when while yield"));
    list.push_back(
        hashLike("r julia jl perl pl",
                 "abstract and begin break do else elseif elsif end export FALSE false for foreach "
                 "function if import in let library local macro module my NA next NULL our print "
                 "repeat return struct sub TRUE true try unless use using while"));
    CodeSyntax powershell = hashLike(
        "ps1 powershell pwsh", "begin break catch class continue do else elseif end exit finally for "
                               "foreach function if in param process return switch throw try until while");
    powershell.variables = true;
    powershell.ignoresCase = true;
    list.push_back(powershell);
    list.push_back(
        hashLike("make makefile mk cmake",
                 "define else elseif endfunction endif endforeach export foreach function if ifdef "
                 "ifeq ifndef ifneq include macro option project set"));
    list.back().variables = true;
    list.push_back(hashLike("dockerfile docker containerfile",
                            "ADD ARG AS CMD COPY ENTRYPOINT ENV EXPOSE FROM HEALTHCHECK LABEL RUN SHELL USER "
                            "VOLUME WORKDIR"));
    list.back().variables = true;
    CodeSyntax sql = hashLike(
        "sql sqlite postgres postgresql mysql plsql psql",
        "add all alter and as asc avg begin between bigint boolean by cascade case char check column commit "
        "constraint count create cross database date default delete desc distinct drop else end exists false "
        "foreign from full group having if in index inner insert int integer into is join key left like "
        "limit "
        "max min not null numeric offset on or order outer over partition primary real references returning "
        "right rollback select set sum table text then timestamp to transaction true union unique update "
        "using "
        "values varchar view when where with");
    sql.ignoresCase = true;
    sql.lineComments = {QLatin1String("--")};
    sql.blockOpen = QLatin1String("/*");
    sql.blockClose = QLatin1String("*/");
    list.push_back(sql);
    CodeSyntax lua = sql;
    lua.names = words("lua hs haskell elm");
    lua.keywords =
        words("and break case class data deriving do else elseif end false for function goto if import "
              "in instance let local module newtype nil not of or repeat return then true type until "
              "where while");
    lua.ignoresCase = false;
    lua.blockOpen = lua.blockClose = QLatin1String();
    list.push_back(lua);
}

void addData(std::vector<CodeSyntax>& list)
{
    CodeSyntax json = cLike("json jsonc json5 ndjson jsonl", "true false null");
    json.shape = CodeShape::Keyed;
    list.push_back(json);
    CodeSyntax yaml = hashLike("yaml yml toml ini conf cfg properties env", "true false null yes no on off");
    yaml.shape = CodeShape::Keyed;
    list.push_back(yaml);
    CodeSyntax markup;
    markup.names = words("html htm xml xhtml svg xaml rss plist");
    markup.shape = CodeShape::Markup;
    markup.blockOpen = QLatin1String("<!--");
    markup.blockClose = QLatin1String("-->");
    list.push_back(markup);
    CodeSyntax diff;
    diff.names = words("diff patch");
    diff.shape = CodeShape::Diff;
    list.push_back(diff);
}

const std::vector<CodeSyntax>& syntaxes()
{
    static const std::vector<CodeSyntax> all = [] {
        std::vector<CodeSyntax> list;
        addCFamily(list);
        addScripts(list);
        addData(list);
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
