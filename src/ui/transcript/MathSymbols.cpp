#include "ui/transcript/MathSymbols.h"

#include <QHash>

#include <algorithm>
#include <array>

namespace varnel {

namespace {

struct Entry
{
    QLatin1String command;
    char16_t character;
};

// Small Greek letters lean, as all variables do.
constexpr std::array variables{
    Entry{QLatin1String("alpha"), u'α'},    Entry{QLatin1String("beta"), u'β'},
    Entry{QLatin1String("gamma"), u'γ'},    Entry{QLatin1String("delta"), u'δ'},
    Entry{QLatin1String("epsilon"), u'ϵ'},  Entry{QLatin1String("varepsilon"), u'ε'},
    Entry{QLatin1String("zeta"), u'ζ'},     Entry{QLatin1String("eta"), u'η'},
    Entry{QLatin1String("theta"), u'θ'},    Entry{QLatin1String("vartheta"), u'ϑ'},
    Entry{QLatin1String("iota"), u'ι'},     Entry{QLatin1String("kappa"), u'κ'},
    Entry{QLatin1String("lambda"), u'λ'},   Entry{QLatin1String("mu"), u'μ'},
    Entry{QLatin1String("nu"), u'ν'},       Entry{QLatin1String("xi"), u'ξ'},
    Entry{QLatin1String("omicron"), u'ο'},  Entry{QLatin1String("pi"), u'π'},
    Entry{QLatin1String("varpi"), u'ϖ'},    Entry{QLatin1String("rho"), u'ρ'},
    Entry{QLatin1String("varrho"), u'ϱ'},   Entry{QLatin1String("sigma"), u'σ'},
    Entry{QLatin1String("varsigma"), u'ς'}, Entry{QLatin1String("tau"), u'τ'},
    Entry{QLatin1String("upsilon"), u'υ'},  Entry{QLatin1String("phi"), u'ϕ'},
    Entry{QLatin1String("varphi"), u'φ'},   Entry{QLatin1String("chi"), u'χ'},
    Entry{QLatin1String("psi"), u'ψ'},      Entry{QLatin1String("omega"), u'ω'},
    Entry{QLatin1String("imath"), u'ı'},    Entry{QLatin1String("jmath"), u'ȷ'},
};

constexpr std::array ordinary{
    Entry{QLatin1String("Gamma"), u'Γ'},       Entry{QLatin1String("Delta"), u'Δ'},
    Entry{QLatin1String("Theta"), u'Θ'},       Entry{QLatin1String("Lambda"), u'Λ'},
    Entry{QLatin1String("Xi"), u'Ξ'},          Entry{QLatin1String("Pi"), u'Π'},
    Entry{QLatin1String("Sigma"), u'Σ'},       Entry{QLatin1String("Upsilon"), u'Υ'},
    Entry{QLatin1String("Phi"), u'Φ'},         Entry{QLatin1String("Psi"), u'Ψ'},
    Entry{QLatin1String("Omega"), u'Ω'},       Entry{QLatin1String("infty"), u'∞'},
    Entry{QLatin1String("partial"), u'∂'},     Entry{QLatin1String("nabla"), u'∇'},
    Entry{QLatin1String("forall"), u'∀'},      Entry{QLatin1String("exists"), u'∃'},
    Entry{QLatin1String("nexists"), u'∄'},     Entry{QLatin1String("emptyset"), u'∅'},
    Entry{QLatin1String("varnothing"), u'∅'},  Entry{QLatin1String("neg"), u'¬'},
    Entry{QLatin1String("lnot"), u'¬'},        Entry{QLatin1String("top"), u'⊤'},
    Entry{QLatin1String("bot"), u'⊥'},         Entry{QLatin1String("angle"), u'∠'},
    Entry{QLatin1String("triangle"), u'△'},    Entry{QLatin1String("prime"), u'′'},
    Entry{QLatin1String("ell"), u'ℓ'},         Entry{QLatin1String("hbar"), u'ℏ'},
    Entry{QLatin1String("Re"), u'ℜ'},          Entry{QLatin1String("Im"), u'ℑ'},
    Entry{QLatin1String("wp"), u'℘'},          Entry{QLatin1String("aleph"), u'ℵ'},
    Entry{QLatin1String("ldots"), u'…'},       Entry{QLatin1String("dots"), u'…'},
    Entry{QLatin1String("dotsc"), u'…'},       Entry{QLatin1String("cdots"), u'⋯'},
    Entry{QLatin1String("dotsb"), u'⋯'},       Entry{QLatin1String("vdots"), u'⋮'},
    Entry{QLatin1String("ddots"), u'⋱'},       Entry{QLatin1String("square"), u'□'},
    Entry{QLatin1String("blacksquare"), u'■'}, Entry{QLatin1String("degree"), u'°'},
    Entry{QLatin1String("checkmark"), u'✓'},   Entry{QLatin1String("dagger"), u'†'},
    Entry{QLatin1String("%"), u'%'},           Entry{QLatin1String("$"), u'$'},
    Entry{QLatin1String("#"), u'#'},           Entry{QLatin1String("&"), u'&'},
    Entry{QLatin1String("_"), u'_'},           Entry{QLatin1String("vert"), u'|'},
    Entry{QLatin1String("Vert"), u'‖'},        Entry{QLatin1String("|"), u'‖'},
    Entry{QLatin1String("backslash"), u'\\'},
};

constexpr std::array binary{
    Entry{QLatin1String("pm"), u'±'},     Entry{QLatin1String("mp"), u'∓'},
    Entry{QLatin1String("times"), u'×'},  Entry{QLatin1String("div"), u'÷'},
    Entry{QLatin1String("cdot"), u'⋅'},   Entry{QLatin1String("ast"), u'∗'},
    Entry{QLatin1String("star"), u'⋆'},   Entry{QLatin1String("circ"), u'∘'},
    Entry{QLatin1String("bullet"), u'∙'}, Entry{QLatin1String("cap"), u'∩'},
    Entry{QLatin1String("cup"), u'∪'},    Entry{QLatin1String("setminus"), u'∖'},
    Entry{QLatin1String("land"), u'∧'},   Entry{QLatin1String("wedge"), u'∧'},
    Entry{QLatin1String("lor"), u'∨'},    Entry{QLatin1String("vee"), u'∨'},
    Entry{QLatin1String("oplus"), u'⊕'},  Entry{QLatin1String("ominus"), u'⊖'},
    Entry{QLatin1String("otimes"), u'⊗'}, Entry{QLatin1String("odot"), u'⊙'},
    Entry{QLatin1String("sqcup"), u'⊔'},  Entry{QLatin1String("uplus"), u'⊎'},
};

constexpr std::array relations{
    Entry{QLatin1String("le"), u'≤'},
    Entry{QLatin1String("leq"), u'≤'},
    Entry{QLatin1String("leqslant"), u'⩽'},
    Entry{QLatin1String("geqslant"), u'⩾'},
    Entry{QLatin1String("ge"), u'≥'},
    Entry{QLatin1String("geq"), u'≥'},
    Entry{QLatin1String("ne"), u'≠'},
    Entry{QLatin1String("neq"), u'≠'},
    Entry{QLatin1String("lt"), u'<'},
    Entry{QLatin1String("gt"), u'>'},
    Entry{QLatin1String("ll"), u'≪'},
    Entry{QLatin1String("gg"), u'≫'},
    Entry{QLatin1String("equiv"), u'≡'},
    Entry{QLatin1String("sim"), u'∼'},
    Entry{QLatin1String("simeq"), u'≃'},
    Entry{QLatin1String("approx"), u'≈'},
    Entry{QLatin1String("cong"), u'≅'},
    Entry{QLatin1String("propto"), u'∝'},
    Entry{QLatin1String("doteq"), u'≐'},
    Entry{QLatin1String("triangleq"), u'≜'},
    Entry{QLatin1String("coloneqq"), u'≔'},
    Entry{QLatin1String("asymp"), u'≍'},
    Entry{QLatin1String("prec"), u'≺'},
    Entry{QLatin1String("succ"), u'≻'},
    Entry{QLatin1String("preceq"), u'⪯'},
    Entry{QLatin1String("succeq"), u'⪰'},
    Entry{QLatin1String("in"), u'∈'},
    Entry{QLatin1String("notin"), u'∉'},
    Entry{QLatin1String("ni"), u'∋'},
    Entry{QLatin1String("subset"), u'⊂'},
    Entry{QLatin1String("supset"), u'⊃'},
    Entry{QLatin1String("subseteq"), u'⊆'},
    Entry{QLatin1String("supseteq"), u'⊇'},
    Entry{QLatin1String("subsetneq"), u'⊊'},
    Entry{QLatin1String("mid"), u'∣'},
    Entry{QLatin1String("nmid"), u'∤'},
    Entry{QLatin1String("parallel"), u'∥'},
    Entry{QLatin1String("perp"), u'⊥'},
    Entry{QLatin1String("vdash"), u'⊢'},
    Entry{QLatin1String("models"), u'⊨'},
    Entry{QLatin1String("to"), u'→'},
    Entry{QLatin1String("rightarrow"), u'→'},
    Entry{QLatin1String("longrightarrow"), u'⟶'},
    Entry{QLatin1String("gets"), u'←'},
    Entry{QLatin1String("leftarrow"), u'←'},
    Entry{QLatin1String("longleftarrow"), u'⟵'},
    Entry{QLatin1String("leftrightarrow"), u'↔'},
    Entry{QLatin1String("Rightarrow"), u'⇒'},
    Entry{QLatin1String("implies"), u'⟹'},
    Entry{QLatin1String("Longrightarrow"), u'⟹'},
    Entry{QLatin1String("Leftarrow"), u'⇐'},
    Entry{QLatin1String("impliedby"), u'⟸'},
    Entry{QLatin1String("Leftrightarrow"), u'⇔'},
    Entry{QLatin1String("iff"), u'⟺'},
    Entry{QLatin1String("mapsto"), u'↦'},
    Entry{QLatin1String("longmapsto"), u'⟼'},
    Entry{QLatin1String("hookrightarrow"), u'↪'},
    Entry{QLatin1String("uparrow"), u'↑'},
    Entry{QLatin1String("downarrow"), u'↓'},
    Entry{QLatin1String("nearrow"), u'↗'},
    Entry{QLatin1String("searrow"), u'↘'},
    Entry{QLatin1String("rightleftharpoons"), u'⇌'},
    Entry{QLatin1String("therefore"), u'∴'},
    Entry{QLatin1String("because"), u'∵'},
    Entry{QLatin1String("colon"), u':'},
};

constexpr std::array sums{
    Entry{QLatin1String("sum"), u'∑'},       Entry{QLatin1String("prod"), u'∏'},
    Entry{QLatin1String("coprod"), u'∐'},    Entry{QLatin1String("bigcup"), u'⋃'},
    Entry{QLatin1String("bigcap"), u'⋂'},    Entry{QLatin1String("bigvee"), u'⋁'},
    Entry{QLatin1String("bigwedge"), u'⋀'},  Entry{QLatin1String("bigoplus"), u'⨁'},
    Entry{QLatin1String("bigotimes"), u'⨂'},
};

constexpr std::array integrals{
    Entry{QLatin1String("int"), u'∫'},
    Entry{QLatin1String("iint"), u'∬'},
    Entry{QLatin1String("iiint"), u'∭'},
    Entry{QLatin1String("oint"), u'∮'},
};

constexpr std::array functions{
    QLatin1String("sin"),    QLatin1String("cos"),  QLatin1String("tan"),    QLatin1String("cot"),
    QLatin1String("sec"),    QLatin1String("csc"),  QLatin1String("arcsin"), QLatin1String("arccos"),
    QLatin1String("arctan"), QLatin1String("sinh"), QLatin1String("cosh"),   QLatin1String("tanh"),
    QLatin1String("coth"),   QLatin1String("log"),  QLatin1String("ln"),     QLatin1String("lg"),
    QLatin1String("exp"),    QLatin1String("dim"),  QLatin1String("ker"),    QLatin1String("deg"),
    QLatin1String("arg"),    QLatin1String("hom"),
};

constexpr std::array limits{
    QLatin1String("lim"),    QLatin1String("max"),    QLatin1String("min"), QLatin1String("sup"),
    QLatin1String("inf"),    QLatin1String("det"),    QLatin1String("gcd"), QLatin1String("Pr"),
    QLatin1String("limsup"), QLatin1String("liminf"),
};

constexpr std::array delimiters{
    Entry{QLatin1String("langle"), u'⟨'}, Entry{QLatin1String("rangle"), u'⟩'},
    Entry{QLatin1String("lfloor"), u'⌊'}, Entry{QLatin1String("rfloor"), u'⌋'},
    Entry{QLatin1String("lceil"), u'⌈'},  Entry{QLatin1String("rceil"), u'⌉'},
    Entry{QLatin1String("lbrace"), u'{'}, Entry{QLatin1String("rbrace"), u'}'},
    Entry{QLatin1String("{"), u'{'},      Entry{QLatin1String("}"), u'}'},
    Entry{QLatin1String("lbrack"), u'['}, Entry{QLatin1String("rbrack"), u']'},
    Entry{QLatin1String("lvert"), u'|'},  Entry{QLatin1String("rvert"), u'|'},
    Entry{QLatin1String("lVert"), u'‖'},  Entry{QLatin1String("rVert"), u'‖'},
};

constexpr std::array accents{
    Entry{QLatin1String("hat"), u'ˆ'},   Entry{QLatin1String("widehat"), u'ˆ'},
    Entry{QLatin1String("tilde"), u'˜'}, Entry{QLatin1String("widetilde"), u'˜'},
    Entry{QLatin1String("dot"), u'˙'},   Entry{QLatin1String("ddot"), u'¨'},
    Entry{QLatin1String("check"), u'ˇ'}, Entry{QLatin1String("breve"), u'˘'},
    Entry{QLatin1String("acute"), u'´'}, Entry{QLatin1String("grave"), u'`'},
    Entry{QLatin1String("vec"), u'→'},
};

using Symbols = QHash<QString, MathSymbol>;

template <typename Entries>
void add(Symbols& symbols, const Entries& entries, const MathSymbol& like)
{
    for (const Entry& entry : entries) {
        MathSymbol symbol = like;
        symbol.text = QString(QChar(entry.character));
        symbols.insert(entry.command, symbol);
    }
}

MathSymbol like(MathClass kind)
{
    MathSymbol symbol;
    symbol.kind = kind;
    return symbol;
}

Symbols allSymbols()
{
    Symbols symbols;
    MathSymbol leaning;
    leaning.isUpright = false;
    add(symbols, variables, leaning);
    add(symbols, ordinary, {});
    add(symbols, binary, like(MathClass::Binary));
    add(symbols, relations, like(MathClass::Relation));
    MathSymbol large = like(MathClass::Operator);
    large.isLarge = true;
    add(symbols, integrals, large);
    large.hasLimits = true;
    add(symbols, sums, large);
    for (const Entry& entry : delimiters) {
        MathSymbol symbol = mathCharacter(entry.character);
        // Bars say in their names which side they stand on.
        if (entry.command.size() > 1)
            symbol.kind = entry.command.startsWith(u'l') ? MathClass::Opening : MathClass::Closing;
        symbols.insert(entry.command, symbol);
    }
    for (const QLatin1String name : functions) {
        MathSymbol symbol = like(MathClass::Operator);
        symbol.text = name;
        symbols.insert(name, symbol);
    }
    for (const QLatin1String name : limits) {
        MathSymbol symbol = like(MathClass::Operator);
        symbol.text = name.startsWith(QLatin1String("lim")) && name.size() > 3
                          ? QLatin1String("lim ") + name.mid(3)
                          : QString(name);
        symbol.hasLimits = true;
        symbols.insert(name, symbol);
    }
    return symbols;
}

template <typename Entries>
QString characterOf(const Entries& entries, const QString& command)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&command](const Entry& entry) { return entry.command == command; });
    return found == entries.end() ? QString() : QString(QChar(found->character));
}

/// Letters that stood in the standard before their alphabet did.
char32_t earlierLetter(const QString& alphabet, char32_t letter)
{
    struct Exception
    {
        QLatin1String alphabet;
        QLatin1String letters;
        std::u32string_view characters;
    };
    static constexpr std::array exceptions{
        Exception{QLatin1String("mathbb"), QLatin1String("CHNPQRZ"), U"ℂℍℕℙℚℝℤ"},
        Exception{QLatin1String("mathcal"), QLatin1String("BEFHILMRego"), U"ℬℰℱℋℐℒℳℛℯℊℴ"},
        Exception{QLatin1String("mathfrak"), QLatin1String("CHIRZ"), U"ℭℌℑℜℨ"},
    };
    for (const Exception& each : exceptions) {
        const qsizetype at = each.alphabet == alphabet
                                 ? QString(each.letters).indexOf(QChar(static_cast<char16_t>(letter)))
                                 : -1;
        if (at >= 0)
            return each.characters[static_cast<std::size_t>(at)];
    }
    return 0;
}

} // namespace

std::optional<MathSymbol> mathSymbol(const QString& command)
{
    static const Symbols symbols = allSymbols();
    const auto found = symbols.find(command);
    return found == symbols.end() ? std::nullopt : std::optional(*found);
}

MathSymbol mathCharacter(char32_t character)
{
    MathSymbol symbol;
    symbol.text = QString::fromUcs4(&character, 1);
    symbol.isUpright = !QChar::isLetter(character);
    if (character == U'-')
        symbol.text = QStringLiteral("−");
    if (character == U'*')
        symbol.text = QStringLiteral("∗");
    const auto isOneOf = [character](std::u32string_view set) { return set.find(character) != set.npos; };
    if (isOneOf(U"+-*±×÷⋅∪∩∧∨⊕⊗"))
        symbol.kind = MathClass::Binary;
    else if (isOneOf(U"=<>:≤≥≠≈≡∼∈∉⊂⊆→←⇒⇔↦∝"))
        symbol.kind = MathClass::Relation;
    else if (isOneOf(U"([{⟨⌊⌈"))
        symbol.kind = MathClass::Opening;
    else if (isOneOf(U")]}⟩⌋⌉!?"))
        symbol.kind = MathClass::Closing;
    else if (isOneOf(U",;"))
        symbol.kind = MathClass::Punctuation;
    return symbol;
}

std::optional<qreal> mathSpace(const QString& command)
{
    static const QHash<QString, qreal> spaces{
        {QStringLiteral(","), 3},      {QStringLiteral("thinspace"), 3}, {QStringLiteral(":"), 4},
        {QStringLiteral(">"), 4},      {QStringLiteral(";"), 5},         {QStringLiteral("!"), -3},
        {QStringLiteral(" "), 5},      {QStringLiteral("enspace"), 9},   {QStringLiteral("quad"), 18},
        {QStringLiteral("qquad"), 36}, {QStringLiteral("~"), 5},
    };
    const auto found = spaces.find(command);
    return found == spaces.end() ? std::nullopt : std::optional(*found);
}

QString mathAccent(const QString& command)
{
    return characterOf(accents, command);
}

std::optional<QString> mathDelimiter(const QString& token)
{
    if (token == QLatin1String("."))
        return QString();
    if (token.size() == 1 && QStringView(u"()[]|/⟨⟩⌊⌋⌈⌉").contains(token.front()))
        return token;
    if (!token.startsWith(u'\\'))
        return std::nullopt;
    const QString command = token.sliced(1);
    QString text = characterOf(delimiters, command);
    if (text.isEmpty() && (command == QLatin1String("vert") || command == QLatin1String("backslash")))
        text = command == QLatin1String("vert") ? QStringLiteral("|") : QStringLiteral("\\");
    if (text.isEmpty() && (command == QLatin1String("Vert") || command == QLatin1String("|")))
        text = QStringLiteral("‖");
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

QString inMathAlphabet(const QString& alphabet, char32_t letter)
{
    const auto itself = [letter] { return QString::fromUcs4(&letter, 1); };
    const bool isUpper = letter >= U'A' && letter <= U'Z';
    const bool isLower = letter >= U'a' && letter <= U'z';
    if (!isUpper && !isLower)
        return itself();
    char32_t first = 0;
    if (alphabet == QLatin1String("mathbb"))
        first = 0x1D538;
    else if (alphabet == QLatin1String("mathcal"))
        first = 0x1D49C;
    else if (alphabet == QLatin1String("mathfrak"))
        first = 0x1D504;
    else
        return itself();
    char32_t character = earlierLetter(alphabet, letter);
    if (character == 0)
        character = isUpper ? first + (letter - U'A') : first + 26 + (letter - U'a');
    return QString::fromUcs4(&character, 1);
}

} // namespace varnel
