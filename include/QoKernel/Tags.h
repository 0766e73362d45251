#pragma once

// Tags of music files: CMusicTagEx with values by source, and the tag library behind it.
#include "KVTagLib/PictureTag.h"
#include "KVTagLib/TagField.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/TagsAhead.h"
#include "KVTagLib/TagsReader.h"
#include "KVTagLib/TagsReaderFactory.h"
#include "KVTagLib/TagsWriter.h"
#include "KVTagLib/TagsWriterFactory.h"
#include "KVTagLib/ValidExtensions.h"
#include "KVTagLib/WriteStop.h"
#include "KVTagLib/layout/FilePart.h"
#include "KVTagLib/sound/SoundHead.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "QoColl/Tags/TagAttrib.h"
