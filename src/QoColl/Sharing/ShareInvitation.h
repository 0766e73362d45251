#pragma once

#include "types/List.h"
#include "types/Map.h"
#include "types/String.h"

#include <string>

/// The link by which a share is offered to a peer:
///
///   https://qokernel.example/anywhere/<share id>?t=1&u=ann&w=text&v=1&c=<check value>
///
///   t  type: "0", "1" or "2"        u  the inviting user's name
///   w  further text                 v  version of the link
///   c  check value over the share id and t, u, w, v
///
/// Whoever alters the id or a parameter without this library's key makes the link invalid. The key
/// stands in the program, so the check value shows that a link is whole, and keeps nothing secret.
/// Values are not escaped: a host must refuse to put one with "&" into a link. A link may come from
/// anyone: its share id and values are texts, and nothing is known of what they hold. No state, no
/// locks; failures are results, with a line in the log.
class QO_API CShareInvitation
{
public:
    static const CString LINK_VERSION; ///< "1"
    static const CString INVITE_LINK;  ///< the beginning of every link

    static const int SHARE_INVITATION_OK = 1;
    static const int SHARE_INVITATION_INVALID = 2;
    static const int SHARE_INVITATION_NEWER_VERSION = 3; ///< made by a newer program

    /// The link; params then has the check value "c" too. "" unless params has t, u, w and v, and v
    /// is "1".
    static CString GenerateShareLink(const CString& shareId, CMapStringToString& params);
    /// One of the three results. A valid link of an unknown type is invalid here.
    static int IsShareInvitation(const CString& link);
    /// One of the three results. Unless it is OK, nothing in shareId and params can be relied on.
    static int ParseShareLink(const CString& link, CString& shareId, CMapStringToString& params);
    /// A new share id: 32 lower-case and 32 upper-case hexadecimal digits.
    static CString GenerateShareID(CMapStringToString& params);
    /// The first line of the file; "", with a line in the log, if it cannot be read.
    static CString GetInvitationFromFile(const CString& path);
    /// A parameter of a valid link, else "".
    static CString GetParam(const CString& link, const CString& key);

protected:
    /// "" if the link is of a version without a check value, or a parameter is missing.
    static CString GetCRC(const CString& shareId, CMapStringToString& params);
    /// The values of the keys one after the other; "" if one of them is missing.
    static CString FormatCrcParams(CMapStringToString& params, CStringList& keys);
    /// "key=value&key=value"; "" if one of them is missing.
    static CString FormatLinkParams(CMapStringToString& params, CStringList& keys);
    /// Adds the parameters of such a text, the last value of each key; 0 for a part without "=",
    /// else 1.
    static int ExtractLinkParams(CString text, CMapStringToString& params);
    /// "" if there is none.
    static CString GetParam(CMapStringToString& params, const CString& key);

private:
    static const std::string K1; ///< the two halves of the key
    static const std::string K2;
};
