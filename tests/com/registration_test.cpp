// Who may register what: the probe's class through the system's registry, with the machine's part
// of it closed as it is to a user without elevation.

#include "com/registration.h"
#include "base/error.h"
#include "com/module.h"
#include "tests/com/late_host.h"
#include "tests/com/probe.h"
#include "windows/failure.h"

namespace tavrix::test {
namespace {

using com::Scope;

/// The system's registry, as a plain user has it.
class ClosedMachine final : public com::RegistryDoor {
  public:
    /// So much of the machine's part may be written, and all of it deleted, until it is closed.
    int writes_left = 0;

    bool key_exists(HKEY root, const base::Text& key, REGSAM view) const override {
        return system_.key_exists(root, key, view);
    }
    bool is_empty(HKEY root, const base::Text& key) const override {
        return system_.is_empty(root, key);
    }
    std::optional<base::Text> value(HKEY root, const base::Text& key,
                                    const base::Text& name) const override {
        return system_.value(root, key, name);
    }
    void create_key(HKEY root, const base::Text& key) override {
        if (!key_exists(root, key, 0)) refuse_write(root, key);
        system_.create_key(root, key);
    }
    void set_value(HKEY root, const base::Text& key, const base::Text& name,
                   const base::Text& value) override {
        refuse_write(root, key);
        system_.set_value(root, key, name, value);
    }
    void delete_value(HKEY root, const base::Text& key, const base::Text& name) override {
        refuse_delete(root, key);
        system_.delete_value(root, key, name);
    }
    void delete_key(HKEY root, const base::Text& key) override {
        refuse_delete(root, key);
        system_.delete_key(root, key);
    }

  private:
    void refuse_write(HKEY root, const base::Text& key) {
        if (root != HKEY_LOCAL_MACHINE) return;
        if (writes_left == 0) windows::throw_failure(E_ACCESSDENIED, key);
        if (--writes_left == 0) may_delete_ = true;
    }
    void refuse_delete(HKEY root, const base::Text& key) const {
        if (root == HKEY_LOCAL_MACHINE && !may_delete_) windows::throw_failure(E_ACCESSDENIED, key);
    }
    bool may_delete_ = false;
    com::RegistryDoor& system_ = com::system_registry();
};

class RegistrationRights : public testing::Test {
  protected:
    const com::CreatableClass classes[1] = {{probe_class, &make_probe}};
    const com::Server server = {.library = u"TavrixProbe", .version_major = 1, .classes = classes};
    com::RegistryDoor& administrator = com::system_registry();
    ClosedMachine user;

    /// Where the class is found: "", "user", "machine" or both.
    std::string found() const {
        std::string scopes;
        for (const auto& [root, name] :
             {std::pair(HKEY_CURRENT_USER, "user"), std::pair(HKEY_LOCAL_MACHINE, "machine")}) {
            const bool id = administrator.key_exists(root, key(u""), 0);
            EXPECT_EQ(administrator.key_exists(root, u"Software\\Classes\\TavrixProbe.Probe", 0),
                      id);
            if (id) scopes += name;
        }
        return scopes;
    }
    static base::Text key(const char16_t* inner) {
        return u"Software\\Classes\\CLSID\\{F23CEEBD-647A-4A5C-B737-42B2F4B6369C}" +
               base::Text(inner);
    }
    /// What `action` fails with; the empty text when it does not.
    template <typename Action>
    static std::string failure(Action action) {
        try {
            action();
            return "";
        } catch (const base::AutomationError& error) {
            EXPECT_EQ(error.number(), static_cast<base::ErrorNumber>(E_ACCESSDENIED));
            return base::to_utf8(error.description());
        }
    }
    void TearDown() override {
        com::unregister_everywhere(server, administrator);
        EXPECT_EQ(found(), "");
    }
};

TEST_F(RegistrationRights, AUserIsToldTheWayInsteadOfBeingRegisteredForLess) {
    const std::string text = failure([&] { register_classes(server, Scope::machine, user); });
    EXPECT_NE(text.find("regsvr32 /n /i:user TavrixProbe.dll"), std::string::npos) << text;
    EXPECT_EQ(found(), "");
    register_classes(server, Scope::user, user);
    EXPECT_EQ(found(), "user");
}

TEST_F(RegistrationRights, AFailureHalfWayLeavesAnOlderRegistrationAsItWas) {
    constexpr int some_writes = 3;
    user.writes_left = some_writes;
    EXPECT_NE(failure([&] { register_classes(server, Scope::machine, user); }), "");
    EXPECT_EQ(found(), "") << "what was written is taken back";
    register_classes(server, Scope::machine, administrator);
    user.writes_left = some_writes;
    EXPECT_NE(failure([&] { register_classes(server, Scope::machine, user); }), "");
    EXPECT_EQ(found(), "machine");
}

TEST_F(RegistrationRights, AUserTakesOutWhatIsHisAndHearsOfWhatIsNot) {
    EXPECT_EQ(failure([&] { unregister_everywhere(server, user); }), "") << "nothing to remove";
    register_classes(server, Scope::user, user);
    EXPECT_EQ(failure([&] { unregister_everywhere(server, user); }), "");
    EXPECT_EQ(found(), "");

    register_classes(server, Scope::machine, administrator);
    register_classes(server, Scope::user, user);
    EXPECT_NE(failure([&] { unregister_everywhere(server, user); }), "");
    EXPECT_EQ(found(), "machine") << "still registered, so it is no success";
}

TEST_F(RegistrationRights, TheMachinesEntriesAreNotHiddenByOldOnesOfTheUser) {
    register_classes(server, Scope::user, administrator);
    administrator.set_value(HKEY_CURRENT_USER, key(u"\\InprocServer32"), u"",
                            u"C:\\old\\Tavrix.dll");
    EXPECT_EQ(failure([&] { register_classes(server, Scope::machine, user); }).empty(), false);
    EXPECT_EQ(found(), "user") << "what did not become the machine's stays the user's";
    register_classes(server, Scope::machine, administrator);
    EXPECT_EQ(found(), "machine");
}

TEST_F(RegistrationRights, EntriesUnderAnotherSpellingOfThePathGoAndAnotherCopysStay) {
    const base::Text own = com::module_path();
    base::Text detour = own;
    detour.insert(own.find_last_of(u'\\'), u"\\.");
    for (const auto& [path, left] : {std::pair(detour, ""), std::pair(own + u".old", "user")}) {
        register_classes(server, Scope::user, administrator);
        administrator.set_value(HKEY_CURRENT_USER, key(u"\\InprocServer32"), u"", path);
        unregister_classes(server, Scope::user, administrator);
        EXPECT_EQ(found(), left);
    }
    register_classes(server, Scope::user, administrator);
}

}  // namespace
}  // namespace tavrix::test
