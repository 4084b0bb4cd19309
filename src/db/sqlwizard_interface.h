#pragma once

// The SQL wizard plugin interface.
//
// Quillet opens an external SQL wizard from its details panel and from the Query menu.
// The wizard is a shared library, libsqlwizard.so, that Quillet looks for first beside
// its program file and then in ../lib/quillet/ relative to it. The library exports one
// C function, CreateORVSqlWizard, that hands out wizard objects. This header is all a
// plugin author needs: plain C++, no other headers of Quillet, no Qt.
//
// Texts are wide: zero-terminated UTF-16 (char16_t). Result codes are 32-bit signed
// integers with the usual meaning of such codes: zero or positive means success,
// negative means failure. Quillet shows the text of the common codes listed below when a
// call fails, and the code in hexadecimal and decimal for any other.
//
// A minimal plugin:
//
//     #include "sqlwizard_interface.h"
//     #include <cstring>
//     #include <new>
//
//     class Wizard final : public IORVSqlWizard {
//     public:
//         void Release() noexcept override { delete this; }
//         std::int32_t GetSQL(const char16_t* dsn, const char16_t* user,
//                             const char16_t* password, const char16_t* sql, std::int32_t nlq,
//                             const char16_t* nlqtext, char16_t** sqltext) override {
//             static const char16_t text[] = u"SELECT * FROM ASSETS";
//             *sqltext = new char16_t[sizeof text / sizeof text[0]];
//             std::memcpy(*sqltext, text, sizeof text);
//             return ORV_S_OK;
//         }
//         void FreeString(char16_t* text) noexcept override { delete[] text; }
//     };
//
//     extern "C" ORV_SQLWIZARD_EXPORT std::int32_t
//     CreateORVSqlWizard(std::int32_t interfaceVersion, IORVSqlWizard** wizard) {
//         *wizard = nullptr;
//         if (interfaceVersion != ORV_SQLWIZARD_INTERFACE_VERSION)
//             return ORV_E_NOINTERFACE;
//         *wizard = new (std::nothrow) Wizard;
//         return *wizard ? ORV_S_OK : ORV_E_OUTOFMEMORY;
//     }
//
// Build it with the same C++ ABI as Quillet (g++ or clang++ on Linux, -fPIC -shared) and
// name the result libsqlwizard.so.

#include <cstdint>

#if defined(__GNUC__)
#define ORV_SQLWIZARD_EXPORT __attribute__((visibility("default")))
#else
#define ORV_SQLWIZARD_EXPORT
#endif

// Result codes.
inline constexpr std::int32_t ORV_S_OK = 0;
inline constexpr std::int32_t ORV_S_FALSE = 1;
inline constexpr std::int32_t ORV_E_NOTIMPL = static_cast<std::int32_t>(0x80004001u);
inline constexpr std::int32_t ORV_E_NOINTERFACE = static_cast<std::int32_t>(0x80004002u);
inline constexpr std::int32_t ORV_E_POINTER = static_cast<std::int32_t>(0x80004003u);
inline constexpr std::int32_t ORV_E_ABORT = static_cast<std::int32_t>(0x80004004u);
inline constexpr std::int32_t ORV_E_FAIL = static_cast<std::int32_t>(0x80004005u);
inline constexpr std::int32_t ORV_E_UNEXPECTED = static_cast<std::int32_t>(0x8000FFFFu);
inline constexpr std::int32_t ORV_E_ACCESSDENIED = static_cast<std::int32_t>(0x80070005u);
inline constexpr std::int32_t ORV_E_OUTOFMEMORY = static_cast<std::int32_t>(0x8007000Eu);
inline constexpr std::int32_t ORV_E_INVALIDARG = static_cast<std::int32_t>(0x80070057u);
// The user cancelled the wizard.
inline constexpr std::int32_t ORV_E_CANCELLED = static_cast<std::int32_t>(0x800704C7u);
// Used by Quillet itself: no library was found, the library lacks the entry point, or
// the library could not be loaded.
inline constexpr std::int32_t ORV_E_CLASSNOTREG = static_cast<std::int32_t>(0x80040154u);
inline constexpr std::int32_t ORV_E_CLASSNOTAVAILABLE = static_cast<std::int32_t>(0x80040111u);
inline constexpr std::int32_t ORV_E_ERRORINDLL = static_cast<std::int32_t>(0x800401F9u);

// The version of the interface below. CreateORVSqlWizard returns ORV_E_NOINTERFACE for
// a version it does not implement.
inline constexpr std::int32_t ORV_SQLWIZARD_INTERFACE_VERSION = 1;

// One wizard object. Quillet creates one for each time the user opens the wizard, calls
// GetSQL once and releases it. All calls come from Quillet's interface thread; GetSQL may
// show modal windows of its own. No method may let a C++ exception escape.
class IORVSqlWizard {
public:
    // Destroys the object. Quillet makes no call on it afterwards.
    virtual void Release() noexcept = 0;

    // Lets the user build a query and hands it back.
    //   dsn, user, password  the data source and its credentials, as the user typed them
    //                        (not trimmed);
    //   sql                  a query to start from (Quillet passes an empty text);
    //   nlq, nlqtext         a natural-language request and its kind (Quillet passes 0
    //                        and an empty text);
    //   sqltext              receives the query built, or nullptr for none.
    // The input texts are never null (an empty text is u""); they stay valid until the
    // call returns. *sqltext is nullptr on entry. A text stored there is owned by the
    // plugin: Quillet copies it and gives it back through FreeString on the same object,
    // whatever the result code. Quillet uses the text only when the result is not negative;
    // an empty or missing text means "no query".
    virtual std::int32_t GetSQL(const char16_t* dsn, const char16_t* user, const char16_t* password,
                                const char16_t* sql, std::int32_t nlq, const char16_t* nlqtext,
                                char16_t** sqltext) = 0;

    // Frees a text that GetSQL stored in *sqltext.
    virtual void FreeString(char16_t* text) noexcept = 0;

protected:
    // Objects are destroyed through Release only.
    ~IORVSqlWizard() = default;
};

// The entry point that the library exports with C linkage, and its type for a lookup.
//   interfaceVersion  ORV_SQLWIZARD_INTERFACE_VERSION of the Quillet that asks;
//   wizard            receives a new object, or nullptr on failure.
// Returns a result code; on success *wizard must be a valid object.
extern "C" ORV_SQLWIZARD_EXPORT std::int32_t CreateORVSqlWizard(std::int32_t interfaceVersion,
                                                                IORVSqlWizard** wizard);
using CreateORVSqlWizardFunction = std::int32_t (*)(std::int32_t interfaceVersion,
                                                    IORVSqlWizard** wizard);
inline constexpr char ORV_SQLWIZARD_ENTRY_POINT[] = "CreateORVSqlWizard";
