#pragma once

class CNSAnalyzer;
class CNSAtom;
class CNSDirMusicFilesInfo;
class CNSNamePattern;
class CNSUtils;
