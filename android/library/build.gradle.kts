plugins {
    id("com.android.library")
    id("maven-publish")
}

fun stated(name: String) = providers.gradleProperty(name).get()

android {
    namespace = "quorvane.parallax"
    compileSdk = 36
    ndkVersion = "28.2.13676358"
    // No Kotlin here, so no app gets its library from here.
    enableKotlin = false

    defaultConfig {
        minSdk = 24
        consumerProguardFiles("proguard.txt")
        aarMetadata {
            minCompileSdk = 27
        }
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
        sourceCompatibility = JavaVersion.VERSION_11
        targetCompatibility = JavaVersion.VERSION_11
    }

    // The sources serve a system image's build too and lie outside this module.
    sourceSets {
        getByName("main").java.srcDir("../java")
        getByName("test").java.srcDir("../../tests/android/java")
    }

    publishing {
        singleVariant("release") {
            withSourcesJar()
            withJavadocJar()
        }
    }
}

publishing {
    publications {
        register<MavenPublication>("release") {
            groupId = stated("quorvane.group")
            artifactId = stated("quorvane.artifact")
            version = Regex("#define QUORVANE_VERSION \"(.*)\"")
                .find(file("../../include/quorvane/version.h").readText())!!.groupValues[1]
            pom {
                name = stated("quorvane.name")
                description = stated("quorvane.description")
                licenses {
                    license {
                        name = stated("quorvane.licence")
                        url = stated("quorvane.licenceUrl")
                        distribution = "repo"
                    }
                }
            }
            afterEvaluate {
                from(components["release"])
            }
        }
    }
    repositories {
        maven {
            name = "folder"
            url = uri("../../out/maven")
        }
    }
}

dependencies {
    // Read by compilers and lint alone, which know them by name: no app gets a dependency of them.
    compileOnly("androidx.annotation:annotation:1.9.1")
    testImplementation("junit:junit:4.13.2")
}
