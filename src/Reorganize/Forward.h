#pragma once

class CAlbumTracksSeperateRule;
class CArtistTracksSeperateRule;
class CJingleSeperateRule;
class CRenameRule;
class CReorganizeRule;
class CReorganizeRuleXmlParser;
class CReorganizeUtils;
class CSeperateRule;
class CSubdirRule;
