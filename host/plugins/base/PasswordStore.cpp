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

/// By the data folder, too: another one may have a plug-in of that name.
SecretService::Attributes attributesOf(const CString& plugin)
{
    return {{"xdg:schema", "qo.Password"},
            {"folder", toSystemPath(Session::folder())},
            {"plugin", toUtf8(plugin)}};
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

Secret PasswordStore::read(const CString& plugin) const
{
    needPrivateFile();
    Secret password = PasswordFile(true).read(plugin);
    if (!password.empty())
        return password;
    if (const auto service = farEnds().secretService())
        password = service->find(attributesOf(plugin));
    if (password.empty())
        throw HostError(ExitCode::failed,
                        "its password is in no store of passwords that can be reached: \"qo plugin "
                        "login " +
                            toUtf8(plugin) + "\" asks for it anew");
    return password;
}

void PasswordStore::write(const CString& plugin, const Secret& password) const
{
    needPrivateFile();
    if (m_isTrial)
        return;
    const auto service = farEnds().secretService();
    if (service)
        service->store("qo: " + toUtf8(plugin), attributesOf(plugin), password);
    PasswordFile(false).write(plugin, service ? Secret() : password);
}

bool PasswordStore::remove(const CString& plugin) const
{
    if (m_isTrial)
        return true;
    PasswordFile file(false);
    const bool wasInFile = !file.read(plugin).empty();
    const auto service = farEnds().secretService();
    if (service)
        service->remove(attributesOf(plugin));
    file.write(plugin, {});
    return wasInFile || service;
}
} // namespace qo::host
