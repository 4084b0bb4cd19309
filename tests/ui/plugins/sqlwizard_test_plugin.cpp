// An SQL wizard plugin for the tests. It shows no window; what it does is chosen by the
// environment at each call:
//   QUILLET_TEST_SQLWIZARD_MODE    "sql" (the default): returns QUILLET_TEST_SQLWIZARD_SQL,
//                                  or "SELECT ID, ASSETTYPE FROM ASSETS" when that is unset;
//                                  "echo": returns its arguments as one line of text;
//                                  "empty": returns an empty text; "none": returns no text;
//                                  "fail": GetSQL returns QUILLET_TEST_SQLWIZARD_CODE
//                                  (default -2147467259, the unspecified error) and a text
//                                  that must be ignored; "throw": GetSQL throws, breaking
//                                  the plugin rules on purpose; "nocreate": the entry point
//                                  fails with that code; "createthrow": the entry point
//                                  throws; "noobject": the entry point succeeds without an
//                                  object.
//   QUILLET_TEST_SQLWIZARD_RECORD  a file to which each GetSQL call appends its arguments
//                                  as one line, in the form "echo" returns them.
// It counts its live objects and texts: QUILLET_TEST_SQLWIZARD_RECORD also receives
// "released objects=N texts=M" after each Release, both 0 when nothing leaked.

#include "db/sqlwizard_interface.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace {

int liveObjects = 0;
int liveTexts = 0;

std::string environment(const char* name, const char* fallback) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string(fallback);
}

std::int32_t configuredCode() {
    return static_cast<std::int32_t>(
        std::strtol(environment("QUILLET_TEST_SQLWIZARD_CODE", "-2147467259").c_str(), nullptr, 0));
}

// UTF-16 to UTF-8, enough for the texts of the tests (no surrogate pairs).
std::string narrow(const char16_t* text) {
    std::string result;
    for (; *text; ++text) {
        const char16_t c = *text;
        if (c < 0x80) {
            result += static_cast<char>(c);
        } else if (c < 0x800) {
            result += static_cast<char>(0xC0 | (c >> 6));
            result += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            result += static_cast<char>(0xE0 | (c >> 12));
            result += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            result += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return result;
}

std::u16string widen(const std::string& text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c < 0x80) {
            result += static_cast<char16_t>(c);
        } else if ((c & 0xE0) == 0xC0 && i + 1 < text.size()) {
            result += static_cast<char16_t>(((c & 0x1F) << 6) | (text[i + 1] & 0x3F));
            i += 1;
        } else if (i + 2 < text.size()) {
            result += static_cast<char16_t>(((c & 0x0F) << 12) | ((text[i + 1] & 0x3F) << 6) |
                                            (text[i + 2] & 0x3F));
            i += 2;
        }
    }
    return result;
}

void record(const std::string& line) {
    const std::string path = environment("QUILLET_TEST_SQLWIZARD_RECORD", "");
    if (path.empty())
        return;
    if (std::FILE* file = std::fopen(path.c_str(), "a")) {
        std::fprintf(file, "%s\n", line.c_str());
        std::fclose(file);
    }
}

char16_t* newText(const std::u16string& text) {
    auto* copy = new char16_t[text.size() + 1];
    std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    ++liveTexts;
    return copy;
}

class TestWizard final : public IORVSqlWizard {
public:
    TestWizard() { ++liveObjects; }

    void Release() noexcept override {
        --liveObjects;
        delete this;
        record("released objects=" + std::to_string(liveObjects) +
               " texts=" + std::to_string(liveTexts));
    }

    std::int32_t GetSQL(const char16_t* dsn, const char16_t* user, const char16_t* password,
                        const char16_t* sql, std::int32_t nlq, const char16_t* nlqtext,
                        char16_t** sqltext) override {
        if (!dsn || !user || !password || !sql || !nlqtext || !sqltext || *sqltext)
            return ORV_E_POINTER;
        const std::string arguments = "dsn=[" + narrow(dsn) + "] user=[" + narrow(user) +
                                      "] password=[" + narrow(password) + "] sql=[" + narrow(sql) +
                                      "] nlq=[" + std::to_string(nlq) + "] nlqtext=[" +
                                      narrow(nlqtext) + "]";
        record(arguments);
        const std::string mode = environment("QUILLET_TEST_SQLWIZARD_MODE", "sql");
        if (mode == "echo") {
            *sqltext = newText(widen(arguments));
        } else if (mode == "empty") {
            *sqltext = newText(u"");
        } else if (mode == "none") {
            // No text at all.
        } else if (mode == "fail") {
            *sqltext = newText(u"SELECT 'must not be used'");
            return configuredCode();
        } else if (mode == "throw") {
            throw std::runtime_error("the test wizard failed");
        } else {
            *sqltext = newText(widen(
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
