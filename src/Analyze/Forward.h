#pragma once

class CDirLTNames;
class CNSAnalyzer;
class CNSAtom;
class CNSDirMusicFilesInfo;
class CNSNamePattern;
class CNSUtils;
