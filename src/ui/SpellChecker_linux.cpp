#include "ui/SpellChecker.h"

#include <dlfcn.h>
#include <enchant.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace varnel {

namespace {

/// The functions that are used of Enchant, which is there on most desktops and not on all. It is loaded at
/// the first word rather than linked: it brings libraries along that no start of the program should pay for.
class Enchant
{
    // Before the functions, which are looked up in it.
    void* m_library = dlopen("libenchant-2.so.2", RTLD_LAZY | RTLD_LOCAL);
    bool m_complete = true;

public:
    /// The loaded functions; null if the library or one of them is missing. Stays loaded until the program
    /// ends.
    static const Enchant* get()
    {
        static const Enchant library;
        return library.m_complete ? &library : nullptr;
    }

    decltype(&enchant_broker_init) init = look<decltype(init)>("enchant_broker_init");
    decltype(&enchant_broker_free) free = look<decltype(free)>("enchant_broker_free");
    decltype(&enchant_broker_dict_exists) exists = look<decltype(exists)>("enchant_broker_dict_exists");
    decltype(&enchant_broker_request_dict) request = look<decltype(request)>("enchant_broker_request_dict");
    decltype(&enchant_broker_free_dict) freeDictionary =
        look<decltype(freeDictionary)>("enchant_broker_free_dict");
    decltype(&enchant_dict_check) check = look<decltype(check)>("enchant_dict_check");
    decltype(&enchant_dict_suggest) suggest = look<decltype(suggest)>("enchant_dict_suggest");
    decltype(&enchant_dict_free_string_list) freeList =
        look<decltype(freeList)>("enchant_dict_free_string_list");
    decltype(&enchant_dict_add) add = look<decltype(add)>("enchant_dict_add");

private:
    Enchant() = default;

    template <typename Function>
    Function look(const char* name)
    {
        auto* const found = m_library ? dlsym(m_library, name) : nullptr;
        m_complete = m_complete && found;
        return reinterpret_cast<Function>(found);
    }
};

class EnchantChecker final : public SpellChecker
{
public:
    explicit EnchantChecker(QStringList languages)
        : m_languages(std::move(languages))
    {}
    EnchantChecker(const EnchantChecker&) = delete;
    EnchantChecker& operator=(const EnchantChecker&) = delete;
    EnchantChecker(EnchantChecker&&) = delete;
    EnchantChecker& operator=(EnchantChecker&&) = delete;
    ~EnchantChecker() override
    {
        if (!m_broker)
            return;
        for (EnchantDict* const dictionary : m_dictionaries)
            m_library->freeDictionary(m_broker, dictionary);
        m_library->free(m_broker);
    }

    bool isRight(const QString& word) override
    {
        const QByteArray text = word.toUtf8();
        for (EnchantDict* const dictionary : dictionaries()) {
            // Below nothing the dictionary itself has failed, which is no fault of the word.
            if (m_library->check(dictionary, text.constData(), text.size()) <= 0)
                return true;
        }
        return m_dictionaries.empty();
    }

    QStringList suggestions(const QString& word) override
    {
        const QByteArray text = word.toUtf8();
        QStringList found;
        for (EnchantDict* const dictionary : dictionaries()) {
            std::size_t count = 0;
            char** const list = m_library->suggest(dictionary, text.constData(), text.size(), &count);
            for (std::size_t i = 0; list && i < count; ++i)
                found.append(QString::fromUtf8(list[i]));
            if (list)
                m_library->freeList(dictionary, list);
        }
        found.removeDuplicates();
        return found;
    }

    void add(const QString& word) override
    {
        const QByteArray text = word.toUtf8();
        if (!dictionaries().empty())
            m_library->add(m_dictionaries.front(), text.constData(), text.size());
    }

private:
    const std::vector<EnchantDict*>& dictionaries()
    {
        if (std::exchange(m_looked, true))
            return m_dictionaries;
        m_library = Enchant::get();
        m_broker = m_library ? m_library->init() : nullptr;
        QStringList loaded;
        for (const QString& language : std::as_const(m_languages)) {
            const QByteArray tag = language.toLatin1();
            // A language without its country may stand for the same dictionary.
            const bool isThere = std::ranges::any_of(
                loaded, [&language](const QString& each) { return each.startsWith(language + u'_'); });
            if (!m_broker || isThere || !m_library->exists(m_broker, tag.constData()))
                continue;
            if (EnchantDict* const dictionary = m_library->request(m_broker, tag.constData())) {
                m_dictionaries.push_back(dictionary);
                loaded.append(language);
            }
        }
        return m_dictionaries;
    }

    QStringList m_languages;
    bool m_looked = false;
    const Enchant* m_library = nullptr;
    EnchantBroker* m_broker = nullptr;
    std::vector<EnchantDict*> m_dictionaries;
};

} // namespace

std::unique_ptr<SpellChecker> systemSpellChecker(const QStringList& languages)
{
    return std::make_unique<EnchantChecker>(languages);
}

} // namespace varnel
