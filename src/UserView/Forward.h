#pragma once

class CQoChangedTagFilesInfo;
class CUVUtils;
class CUVViewHelper;
class CUVViewItem;
class CUVViewItemInfo;
class CUVViewItemList;
