#pragma once

class IDownloadItem;
class IQoDownloadItem;
