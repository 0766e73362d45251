#pragma once

class CLTObject;
