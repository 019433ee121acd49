#include "ui/transcript/MathParser.h"

#include "ui/transcript/MathTokens.h"

#include <QHash>

namespace varnel {

namespace {

class Parser
{
public:
    explicit Parser(const QString& source)
        : m_tokens(source)
    {}

    MathList parse()
    {
        MathList list = parseList();
        if (!m_tokens.atEnd())
            throw UnsettableMaths();
        return list;
    }

private:
    static bool endsList(const QString& token)
    {
        static const QList<QString> ends{QString(),
                                         QStringLiteral("}"),
                                         QStringLiteral("&"),
                                         QStringLiteral("\\\\"),
                                         QStringLiteral("\\cr"),
                                         QStringLiteral("\\right"),
                                         QStringLiteral("\\middle"),
                                         QStringLiteral("\\end")};
        return ends.contains(token);
    }

    /// @param end one more token that ends the list, for the argument in brackets.
    MathList parseList(QLatin1String end = {})
    {
        struct Depth
        {
            int& depth;
            ~Depth() { --depth; }
        } const guard{m_depth};
        if (++m_depth > deepestFormula)
            throw UnsettableMaths();
        MathList list;
        while (!endsList(m_tokens.peek()) && (end.isEmpty() || m_tokens.peek() != end))
            parseItem(list);
        return list;
    }

    void parseItem(MathList& list)
    {
        const QString token = m_tokens.peek();
        if (token == QLatin1String("^") || token == QLatin1String("_") || token == QLatin1String("'")) {
            if (list.empty())
                list.push_back({MathGroup(), {}, {}, {}});
            parseScript(list.back());
        } else if (token == QLatin1String("\\limits") || token == QLatin1String("\\nolimits")) {
            if (list.empty())
                throw UnsettableMaths();
            list.back().limits = m_tokens.take() == QLatin1String("\\limits");
        } else {
            list.push_back(parseNode());
        }
    }

    void parseScript(MathNode& node)
    {
        const QString token = m_tokens.take();
        if (token == QLatin1String("'")) {
            node.superscript.push_back({MathGlyph{*mathSymbol(QStringLiteral("prime")), {}}, {}, {}, {}});
            return;
        }
        MathList& script = token == QLatin1String("^") ? node.superscript : node.subscript;
        // Primes may go before an exponent, a second exponent may not.
        for (const MathNode& before : script) {
            const auto* const glyph = std::get_if<MathGlyph>(&before.content);
            if (glyph == nullptr || glyph->symbol.text != QStringLiteral("′"))
                throw UnsettableMaths();
        }
        for (MathNode& part : parseArgument())
            script.push_back(std::move(part));
    }

    MathList parseArgument()
    {
        if (m_tokens.takeIf(QLatin1String("{"))) {
            MathList list = parseList();
            m_tokens.expect(QLatin1String("}"));
            return list;
        }
        if (endsList(m_tokens.peek()) || m_tokens.peek() == QLatin1String("^") ||
            m_tokens.peek() == QLatin1String("_"))
            throw UnsettableMaths();
        MathList list;
        list.push_back(parseNode());
        return list;
    }

    MathNode parseNode()
    {
        struct Depth
        {
            int& depth;
            ~Depth() { --depth; }
        } const guard{m_depth};
        if (++m_depth > deepestFormula)
            throw UnsettableMaths();
        const QString token = m_tokens.take();
        if (token == QLatin1String("{")) {
            MathGroup group{parseList()};
            m_tokens.expect(QLatin1String("}"));
            return node(std::move(group));
        }
        if (token == QLatin1String("~"))
            return node(MathGap{*mathSpace(token)});
        if (!token.startsWith(u'\\')) {
            if (token == QLatin1String("%") || token == QLatin1String("#") || token == QLatin1String("$"))
                throw UnsettableMaths();
            return node(MathGlyph{mathCharacter(token.toUcs4().front()), m_letters});
        }
        return parseCommand(token.sliced(1));
    }

    template <typename Content>
    static MathNode node(Content content)
    {
        return {std::move(content), {}, {}, {}};
    }

    MathNode parseCommand(const QString& command)
    {
        if (const auto symbol = mathSymbol(command))
            return node(MathGlyph{*symbol, m_letters});
        if (const auto space = mathSpace(command))
            return node(MathGap{*space});
        if (const auto letters = mathLetters(command))
            return parseLetters(*letters);
        if (const auto letters = mathWordLetters(command))
            return node(MathText{m_tokens.takeWords(), *letters});
        if (const QString accent = mathAccent(command); !accent.isEmpty())
            return node(MathAccent{accent, false, parseArgument()});
        if (command == QLatin1String("overline") || command == QLatin1String("bar") ||
            command == QLatin1String("underline"))
            return node(MathAccent{{}, command.startsWith(u'u'), parseArgument()});
        if (command.endsWith(QLatin1String("frac")) || command.endsWith(QLatin1String("binom")))
            return parseFraction(command);
        if (command == QLatin1String("begin"))
            return parseEnvironment();
        if (command == QLatin1String("left"))
            return parseFence();
        return parseOtherCommand(command);
    }

    MathNode parseOtherCommand(const QString& command)
    {
        if (command == QLatin1String("sqrt")) {
            MathRoot root;
            if (m_tokens.takeIf(QLatin1String("["))) {
                root.degree = parseList(QLatin1String("]"));
                m_tokens.expect(QLatin1String("]"));
            }
            root.list = parseArgument();
            return node(std::move(root));
        }
        if (command == QLatin1String("mathbb") || command == QLatin1String("mathcal") ||
            command == QLatin1String("mathfrak"))
            return parseAlphabet(command);
        if (command == QLatin1String("operatorname")) {
            const bool hasLimits = m_tokens.takeIf(QLatin1String("*"));
            MathSymbol symbol;
            symbol.text = m_tokens.takeWords();
            symbol.kind = MathClass::Operator;
            symbol.hasLimits = hasLimits;
            return node(MathGlyph{symbol, {}});
        }
        if (command == QLatin1String("overset") || command == QLatin1String("stackrel"))
            return parseStack(true);
        if (command == QLatin1String("underset"))
            return parseStack(false);
        if (command == QLatin1String("displaystyle") || command == QLatin1String("textstyle"))
            return node(MathStyleChange{command.startsWith(u'd')});
        if (command == QLatin1String("bmod"))
            return node(MathText{QStringLiteral(" mod "), MathLetters::Upright});
        if (command == QLatin1String("pmod"))
            return parseModulus();
        return parseSized(command);
    }

    MathNode parseLetters(MathLetters letters)
    {
        const MathLetters before = std::exchange(m_letters, letters);
        MathGroup group{parseArgument()};
        m_letters = before;
        return node(std::move(group));
    }

    MathNode parseAlphabet(const QString& alphabet)
    {
        MathGroup group{parseArgument()};
        for (MathNode& each : group.list) {
            auto* const glyph = std::get_if<MathGlyph>(&each.content);
            if (glyph == nullptr || glyph->symbol.text.isEmpty())
                throw UnsettableMaths();
            glyph->symbol.text = inMathAlphabet(alphabet, glyph->symbol.text.toUcs4().front());
            glyph->symbol.isUpright = true;
        }
        return node(std::move(group));
    }

    MathNode parseFraction(const QString& command)
    {
        MathFraction fraction;
        const bool isBinomial = command.endsWith(QLatin1String("binom"));
        const QString prefix = command.chopped(isBinomial ? 5 : 4);
        if (prefix == QLatin1String("d") || prefix == QLatin1String("t"))
            fraction.isLarge = prefix == QLatin1String("d");
        else if (!prefix.isEmpty() && command != QLatin1String("cfrac"))
            throw UnsettableMaths();
        fraction.hasRule = !isBinomial;
        fraction.isDelimited = isBinomial;
        fraction.above = parseArgument();
        fraction.below = parseArgument();
        return node(std::move(fraction));
    }

    MathNode parseStack(bool isAbove)
    {
        MathStack stack;
        MathList beside = parseArgument();
        (isAbove ? stack.above : stack.below) = std::move(beside);
        stack.base = parseArgument();
        return node(std::move(stack));
    }

    MathNode parseModulus()
    {
        MathGroup group;
        group.list.push_back(node(MathText{QStringLiteral("  (mod "), MathLetters::Upright}));
        for (MathNode& each : parseArgument())
            group.list.push_back(std::move(each));
        group.list.push_back(node(MathText{QStringLiteral(")"), MathLetters::Upright}));
        return node(std::move(group));
    }

    QString parseDelimiter()
    {
        const auto delimiter = mathDelimiter(m_tokens.take());
        if (!delimiter)
            throw UnsettableMaths();
        return *delimiter;
    }

    MathNode parseFence()
    {
        MathFence fence;
        fence.delimiters.append(parseDelimiter());
        fence.parts.push_back(parseList());
        while (m_tokens.takeIf(QLatin1String("\\middle"))) {
            fence.delimiters.append(parseDelimiter());
            fence.parts.push_back(parseList());
        }
        m_tokens.expect(QLatin1String("\\right"));
        fence.delimiters.append(parseDelimiter());
        return node(std::move(fence));
    }

    /// A delimiter of a given size: \big( \Bigr] and their like.
    MathNode parseSized(QString command)
    {
        static const QHash<QString, qreal> heights{{QStringLiteral("big"), 1.2},
                                                   {QStringLiteral("Big"), 1.8},
                                                   {QStringLiteral("bigg"), 2.4},
                                                   {QStringLiteral("Bigg"), 3.0}};
        MathFence fence;
        if (command.endsWith(u'l') || command.endsWith(u'r') || command.endsWith(u'm')) {
            fence.kind = command.endsWith(u'l')   ? MathClass::Opening
                         : command.endsWith(u'r') ? MathClass::Closing
                                                  : MathClass::Relation;
            command.chop(1);
        }
        fence.height = heights.value(command);
        if (fence.height <= 0)
            throw UnsettableMaths();
        fence.delimiters.append(parseDelimiter());
        return node(std::move(fence));
    }

    MathNode parseEnvironment()
    {
        const QString name = m_tokens.takeWords();
        const auto known = mathEnvironment(name);
        if (!known)
            throw UnsettableMaths();
        MathTable table;
        table.opening = QString::fromUtf8(known->opening);
        table.closing = QString::fromUtf8(known->closing);
        table.alignment = QString::fromLatin1(known->alignment);
        table.isSmall = known->isSmall;
        table.isAligned = known->isAligned;
        table.isDisplayed = known->isDisplayed;
        if (name == QLatin1String("array")) {
            table.alignment = m_tokens.takeWords().remove(u' ').remove(u'|');
            for (const QChar each : std::as_const(table.alignment)) {
                if (!QStringView(u"lcr").contains(each))
                    throw UnsettableMaths();
            }
        }
        parseRows(table);
        if (m_tokens.takeWords() != name)
            throw UnsettableMaths();
        return node(std::move(table));
    }

    void parseRows(MathTable& table)
    {
        table.rows.emplace_back();
        while (true) {
            table.rows.back().push_back(parseList());
            const QString token = m_tokens.take();
            if (token == QLatin1String("\\end"))
                break;
            if (token == QLatin1String("\\\\") || token == QLatin1String("\\cr"))
                table.rows.emplace_back();
            else if (token != QLatin1String("&"))
                throw UnsettableMaths();
        }
        // A break after the last row begins no other.
        if (table.rows.back().size() == 1 && table.rows.back().front().empty() && table.rows.size() > 1)
            table.rows.pop_back();
    }

    MathTokens m_tokens;
    int m_depth = 0;
    MathLetters m_letters = MathLetters::Normal;
};

} // namespace

std::optional<MathList> parseMaths(const QString& source)
{
    if (source.size() > longestFormula)
        return std::nullopt;
    try {
        MathList list = Parser(source).parse();
        return list.empty() ? std::nullopt : std::optional(std::move(list));
    } catch (const UnsettableMaths&) {
        return std::nullopt;
    }
}

} // namespace varnel
