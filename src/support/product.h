// What the installed product is known by: its client's interface, and the files in its folder.
#ifndef VELNOR_SUPPORT_PRODUCT_H
#define VELNOR_SUPPORT_PRODUCT_H

namespace velnor {

// Where the client listens, and the version of its interface that it is spoken to in.
#define VELNOR_CLIENT_HOST "127.0.0.1"
#define VELNOR_CLIENT_PORT "9421"
inline constexpr char kClientHost[] = VELNOR_CLIENT_HOST;
inline constexpr int kClientPort = 9421;
inline constexpr char kClientUrl[] = "http://" VELNOR_CLIENT_HOST ":" VELNOR_CLIENT_PORT "/";
inline constexpr char kApiVersion[] = "capi_1.6.5";
#undef VELNOR_CLIENT_HOST
#undef VELNOR_CLIENT_PORT

// Names in the install directory (support/paths.h).
inline constexpr char kLogFileName[] = "installer.txt";
inline constexpr char kClientIniFile[] = "client.ini";
inline constexpr char kGuidFile[] = "guid.ini";
inline constexpr char kEulaFile[] = "accepteula.txt";
inline constexpr char kLoaderFile[] = "loader.pl";
inline constexpr char kUiToolArchive[] = "ksmacui.tar.gz";
inline constexpr char kUninstallerArchive[] = "uninstall.tar.gz";
inline constexpr char kRegistryFile[] = "appregistry.dat";
inline constexpr char kRegistryBackupFile[] = "appregistry.dat.bak";
inline constexpr char kNewRegistryFile[] = "appregistry.dat.new";

/// All of them, which the maker's tools let no client be called.
inline constexpr const char* kInstalledFiles[] = {
    kLogFileName,   kClientIniFile,      kGuidFile,     kEulaFile,           kLoaderFile,
    kUiToolArchive, kUninstallerArchive, kRegistryFile, kRegistryBackupFile, kNewRegistryFile};

}  // namespace velnor

#endif
