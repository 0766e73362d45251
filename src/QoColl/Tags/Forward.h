#pragma once

class CMusicTagEx;
class CTagAttrib;
class CTagAttribValue;
struct SimpleMusicTag;
