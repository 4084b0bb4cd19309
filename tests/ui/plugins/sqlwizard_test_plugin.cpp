// An SQL wizard plugin for the tests; it shows no window. QUILLET_TEST_SQLWIZARD_MODE:
// "sql" (default) returns QUILLET_TEST_SQLWIZARD_SQL (ASCII; by default "SELECT ID,
// ASSETTYPE FROM ASSETS"), "echo" its arguments as one line, "empty" an empty text, "none"
// no text; "fail" returns QUILLET_TEST_SQLWIZARD_CODE (default: the unspecified error) with
// a text that must not be used; "throw" throws from GetSQL. "nocreate", "createthrow" and
// "noobject": the entry point returns that code, throws, or succeeds without an object.
// QUILLET_TEST_SQLWIZARD_RECORD: a file that gets a line with the arguments of each call
// and, after each Release, "released objects=N texts=M" (both 0 when nothing leaked).

#include "db/sqlwizard_interface.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

int liveObjects = 0;
int liveTexts = 0;

std::string environment(const char* name, const char* fallback) {
    const char* value = std::getenv(name);
    return value ? value : fallback;
}

std::int32_t configuredCode() {
    return static_cast<std::int32_t>(
        std::strtol(environment("QUILLET_TEST_SQLWIZARD_CODE", "-2147467259").c_str(), nullptr, 0));
}

// UTF-16 to UTF-8, enough for the texts of the tests (no surrogate pairs).
std::string narrow(std::u16string_view text) {
    std::string result;
    for (const char16_t c : text) {
        if (c < 0x80)
            result += char(c);
        else if (c < 0x800)
            result += {char(0xC0 | c >> 6), char(0x80 | (c & 0x3F))};
        else
            result +=
                {char(0xE0 | c >> 12), char(0x80 | ((c >> 6) & 0x3F)), char(0x80 | (c & 0x3F))};
    }
    return result;
}

void record(const std::u16string& line) {
    const std::string path = environment("QUILLET_TEST_SQLWIZARD_RECORD", "");
    if (std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "a")) {
        std::fprintf(file, "%s\n", narrow(line).c_str());
        std::fclose(file);
    }
}

char16_t* newText(const std::u16string& text) {
    auto* copy = new char16_t[text.size() + 1];
    std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    ++liveTexts;
    return copy;
}

std::u16string ascii(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

class TestWizard final : public IORVSqlWizard {
public:
    TestWizard() { ++liveObjects; }

    void Release() noexcept override {
        --liveObjects;
        delete this;
        record(ascii("released objects=" + std::to_string(liveObjects) +
                     " texts=" + std::to_string(liveTexts)));
    }

    std::int32_t GetSQL(const char16_t* dsn, const char16_t* user, const char16_t* password,
                        const char16_t* sql, std::int32_t nlq, const char16_t* nlqtext,
                        char16_t** sqltext) override {
        if (!dsn || !user || !password || !sql || !nlqtext || !sqltext || *sqltext)
            return ORV_E_POINTER;
        const std::u16string arguments = u"dsn=[" + std::u16string(dsn) + u"] user=[" + user +
                                         u"] password=[" + password + u"] sql=[" + sql +
                                         u"] nlq=[" + ascii(std::to_string(nlq)) + u"] nlqtext=[" +
                                         nlqtext + u"]";
        record(arguments);
        const std::string mode = environment("QUILLET_TEST_SQLWIZARD_MODE", "sql");
        if (mode == "echo") {
            *sqltext = newText(arguments);
        } else if (mode == "empty") {
            *sqltext = newText(u"");
        } else if (mode == "fail") {
            *sqltext = newText(u"SELECT 'must not be used'");
            return configuredCode();
        } else if (mode == "throw") {
            throw std::runtime_error("the test wizard failed");
        } else if (mode != "none") {
            *sqltext = newText(ascii(
                environment("QUILLET_TEST_SQLWIZARD_SQL", "SELECT ID, ASSETTYPE FROM ASSETS")));
        }
        return ORV_S_OK;
    }

    void FreeString(char16_t* text) noexcept override {
        --liveTexts;
        delete[] text;
    }

private:
    ~TestWizard() = default;
};

} // namespace

extern "C" ORV_SQLWIZARD_EXPORT std::int32_t CreateORVSqlWizard(std::int32_t interfaceVersion,
                                                                IORVSqlWizard** wizard) {
    if (!wizard)
        return ORV_E_POINTER;
    *wizard = nullptr;
    if (interfaceVersion != ORV_SQLWIZARD_INTERFACE_VERSION)
        return ORV_E_NOINTERFACE;
    const std::string mode = environment("QUILLET_TEST_SQLWIZARD_MODE", "sql");
    if (mode == "nocreate")
        return configuredCode();
    if (mode == "noobject")
        return ORV_S_OK;
    if (mode == "createthrow")
        throw std::runtime_error("the test wizard cannot be created");
    *wizard = new (std::nothrow) TestWizard;
    return *wizard ? ORV_S_OK : ORV_E_OUTOFMEMORY;
}
