package quorvane.parallax;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Comparator;
import java.util.List;

/**
 * Runs every public method of the test classes as a test, each on an object and a thread of its
 * own, so that none finds another's context current. Says what failed and how many passed, in the
 * words of the project's other test programs, on standard error: the component's lines on standard
 * output are buffered apart and would cut into others.
 */
final class TestRun {
    private TestRun() {}

    /**
     * Arguments: the folder of expected_pictures, the test classes with commas between them, then
     * a text that the names of the tests must hold, if not all shall run.
     */
    public static void main(String[] arguments)
            throws ClassNotFoundException, InterruptedException {
        ParallaxRendererTest.folder = arguments[0];
        final String only = arguments.length > 2 ? arguments[2] : "";
        final List<Method> methods = new ArrayList<>();
        for (String name : arguments[1].split(",")) {
            final Class<?> type = Class.forName(TestRun.class.getPackage().getName() + "." + name);
            methods.addAll(Arrays.asList(type.getDeclaredMethods()));
        }
        methods.sort(Comparator.comparing(TestRun::nameOf));
        int passed = 0;
        int failed = 0;
        for (Method method : methods) {
            final boolean test =
                    Modifier.isPublic(method.getModifiers()) && nameOf(method).contains(only);
            if (!test) {
                continue;
            }
            final Throwable[] failure = {null};
            final Thread thread = new Thread(() -> failure[0] = failureOf(method));
            thread.start();
            thread.join();
            if (failure[0] == null) {
                ++passed;
            } else {
                ++failed;
                System.err.println("[  FAILED  ] " + nameOf(method));
                failure[0].printStackTrace(System.err);
            }
        }
        System.err.println("[  PASSED  ] " + passed + " tests.");
        if (failed > 0) {
            System.err.println("[  FAILED  ] " + failed + " tests.");
        }
        System.exit(failed > 0 || passed == 0 ? 1 : 0);
    }

    private static String nameOf(Method test) {
        return test.getDeclaringClass().getSimpleName() + "." + test.getName();
    }

    private static Throwable failureOf(Method test) {
        try {
            test.invoke(test.getDeclaringClass().getDeclaredConstructor().newInstance());
            return null;
        } catch (InvocationTargetException thrown) {
            return thrown.getCause();
        } catch (ReflectiveOperationException unexpected) {
            return unexpected;
        }
    }
}
