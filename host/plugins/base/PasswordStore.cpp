#include "plugins/base/PasswordStore.h"

#include "bus/SecretService.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/session/KeyValueConfig.h"
#include "core/session/Session.h"
#include "far/FarEnds.h"

namespace qo::host
{
namespace
{
CString passwordFile()
{
    return Session::folder() + u"\\passwords";
}

/// The file for the length of a call.
class PasswordFile
{
public:
    explicit PasswordFile(bool isTrial) : m_config(passwordFile(), isTrial) {}
    ~PasswordFile() { m_config.wipe(); }
    PasswordFile(const PasswordFile&) = delete;
    PasswordFile& operator=(const PasswordFile&) = delete;

    Secret read(const CString& plugin) { return Secret(m_config.getValue(keyOf(plugin))); }
    /// What the plug-in's item in the desktop's store is found by; none when there can be none.
    SecretService::Attributes attributesOf(const CString& plugin)
    {
        const CString id = m_config.getValue(storeId());
        if (id.IsEmpty())
            return {};
        return {{"xdg:schema", "qo.Password"}, {"data", toUtf8(id)}, {"plugin", toUtf8(plugin)}};
    }
    void makeId()
    {
        if (!m_config.getValue(storeId()).IsEmpty())
            return;
        m_config.setValue(storeId(), guidToText(systemClock().newGuid()));
        m_config.save();
    }
    void write(const CString& plugin, const Secret& password)
    {
        CString text = password.text();
        const PassingSecret secret(text);
        if (password.empty())
            m_config.unset(keyOf(plugin));
        else
            m_config.setValue(keyOf(plugin), text);
        m_config.save();
    }

private:
    KVConfig::Key* keyOf(const CString& plugin)
    {
        return m_config.addKey(
            m_config.addSection(KVConfig::ordinarySection, u"Passwords"), plugin, u"");
    }
    KVConfig::Key* storeId()
    {
        return m_config.addKey(
            m_config.addSection(KVConfig::ordinarySection, u"Desktop"), u"Id", u"");
    }

    KeyValueConfig m_config;
};
} // namespace

void PasswordStore::needPrivateFile()
{
    constexpr std::uint32_t rightsOfOthers = 077;
    NameInfo info;
    if (fileSystem().lookThrough(passwordFile(), info) == 0 && (info.mode & rightsOfOthers) != 0)
        throw HostError(ExitCode::failed,
                        "the passwords in " + shownPath(passwordFile()) +
                            " are not used, since others may read that file: take their rights "
                            "away with \"chmod 600\", and change the passwords");
}

Secret PasswordStore::read(const CString& plugin, const IsCanceled& isCanceled) const
{
    needPrivateFile();
    PasswordFile file(true);
    Secret password = file.read(plugin);
    const SecretService::Attributes attributes = file.attributesOf(plugin);
    const bool mayBeElsewhere = password.empty() && !attributes.empty();
    if (const auto service = mayBeElsewhere ? farEnds().secretService(isCanceled) : nullptr)
        password = service->find(attributes);
    if (password.empty())
        throw HostError(ExitCode::failed,
                        "its password is in no store of passwords that can be reached: \"qo plugin "
                        "login " +
                            toUtf8(plugin) + "\" asks for it anew");
    return password;
}

void PasswordStore::write(const CString& plugin,
                          const Secret& password,
                          PasswordPlace place,
                          const IsCanceled& isCanceled) const
{
    needPrivateFile();
    if (m_isTrial)
        return;
    PasswordFile file(false);
    const auto service =
        place == PasswordPlace::file ? nullptr : farEnds().secretService(isCanceled);
    if (place == PasswordPlace::desktop && !service)
        throw HostError(ExitCode::failed, "the desktop offers no store of passwords");
    if (service)
    {
        file.makeId();
        try
        {
            service->store("qo: " + toUtf8(plugin), file.attributesOf(plugin), password);
        }
        catch (const HostError& error)
        {
            if (error.code() == ExitCode::interrupted)
                throw;
            throw HostError(error.code(),
                            std::string(error.what()) +
                                "; \"--keep-in file\" keeps the password in a file instead");
        }
    }
    file.write(plugin, service ? Secret() : password);
}

bool PasswordStore::remove(const CString& plugin, const IsCanceled& isCanceled) const
{
    if (m_isTrial)
        return true;
    PasswordFile file(false);
    const bool wasInFile = !file.read(plugin).empty();
    const SecretService::Attributes attributes = file.attributesOf(plugin);
    const auto service = attributes.empty() ? nullptr : farEnds().secretService(isCanceled);
    if (service)
        service->remove(attributes);
    file.write(plugin, {});
    return wasInFile || service || attributes.empty();
}
} // namespace qo::host
