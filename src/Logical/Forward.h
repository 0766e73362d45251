#pragma once

class CLTAlbum;
class CLTArtist;
class CLTGenre;
class CLTLyrics;
class CLTManager;
class CLTObject;
class CLTPicture;
class CLTTrack;
