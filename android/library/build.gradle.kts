plugins {
    id("com.android.library")
}

android {
    namespace = "quorvane.parallax"
    compileSdk = 35
    ndkVersion = "27.2.12479018"

    defaultConfig {
        minSdk = 24
        consumerProguardFiles("proguard.txt")
        externalNativeBuild {
            cmake {
                targets("quorvane_jni")
                arguments(
                    "-DQUORVANE_BUILD_JNI=ON",
                    "-DQUORVANE_BUILD_TOOLS=OFF",
                    "-DQUORVANE_BUILD_TESTS=OFF",
                    "-DANDROID_STL=c++_static",
                )
            }
        }
        ndk {
            abiFilters += listOf("arm64-v8a", "armeabi-v7a", "x86_64", "x86")
        }
    }

    externalNativeBuild {
        cmake {
            path = file("../../CMakeLists.txt")
            version = "3.22.1"
        }
    }

    compileOptions {
        sourceCompatibility = JavaVersion.VERSION_1_8
        targetCompatibility = JavaVersion.VERSION_1_8
    }

    // The sources serve a system image's build too and lie outside this module.
    sourceSets {
        getByName("main").java.srcDir("../java")
        getByName("test").java.srcDir("../../tests/android/java")
    }
}

dependencies {
    testImplementation("junit:junit:4.13.2")
}
