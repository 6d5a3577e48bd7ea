import com.sun.source.tree.BinaryTree;
import com.sun.source.tree.BlockTree;
import com.sun.source.tree.CatchTree;
import com.sun.source.tree.ClassTree;
import com.sun.source.tree.CompilationUnitTree;
import com.sun.source.tree.ConditionalExpressionTree;
import com.sun.source.tree.ExpressionTree;
import com.sun.source.tree.IdentifierTree;
import com.sun.source.tree.IfTree;
import com.sun.source.tree.LiteralTree;
import com.sun.source.tree.MemberReferenceTree;
import com.sun.source.tree.MemberSelectTree;
import com.sun.source.tree.MethodTree;
import com.sun.source.tree.NewClassTree;
import com.sun.source.tree.ParenthesizedTree;
import com.sun.source.tree.ReturnTree;
import com.sun.source.tree.StatementTree;
import com.sun.source.tree.ThrowTree;
import com.sun.source.tree.Tree;
import com.sun.source.tree.Tree.Kind;
import com.sun.source.util.JavacTask;
import com.sun.source.util.TreePath;
import com.sun.source.util.TreePathScanner;
import com.sun.source.util.Trees;
import java.io.File;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import javax.lang.model.element.AnnotationMirror;
import javax.lang.model.element.Element;
import javax.lang.model.element.ElementKind;
import javax.lang.model.element.ExecutableElement;
import javax.lang.model.element.Modifier;
import javax.lang.model.element.TypeElement;
import javax.lang.model.element.VariableElement;
import javax.lang.model.type.TypeKind;
import javax.lang.model.type.TypeMirror;
import javax.lang.model.util.ElementFilter;
import javax.tools.JavaCompiler;
import javax.tools.StandardJavaFileManager;
import javax.tools.ToolProvider;

/**
 * What javac does not check of the Java face: java FaceCheck.java CLASSPATH LEVEL SOURCE...
 *
 * <p>Whatever an app can call of quorvane.parallax says of each reference whether it may be null. And what the stubs
 * mark as newer than LEVEL, by RequiresApi, is used only where the level was asked for before: on
 * an older phone it would end the app.
 */
public final class FaceCheck extends TreePathScanner<Void, Void> {
    private final Trees trees;
    private final JavacTask task;
    private final int level;
    private int checked;
    private int newer;
    private final List<String> wrong = new ArrayList<>();

    private FaceCheck(JavacTask task, int level) {
        this.task = task;
        this.level = level;
        trees = Trees.instance(task);
    }

    public static void main(String[] arguments) throws Exception {
        JavaCompiler compiler = ToolProvider.getSystemJavaCompiler();
        StandardJavaFileManager files = compiler.getStandardFileManager(null, null, null);
        List<File> sources = new ArrayList<>();
        for (String name : Arrays.asList(arguments).subList(2, arguments.length)) {
            sources.add(new File(name));
        }
        JavacTask task = (JavacTask) compiler.getTask(null, files, null,
                Arrays.asList("--release", "8", "-Xlint:-options", "-proc:none", "-cp", arguments[0]),
                null, files.getJavaFileObjectsFromFiles(sources));
        Iterable<? extends CompilationUnitTree> units = task.parse();
        task.analyze();
        FaceCheck check = new FaceCheck(task, Integer.parseInt(arguments[1]));
        for (CompilationUnitTree unit : units) {
            check.scan(unit, null);
        }
        check.wrong.forEach(System.out::println);
        System.out.println("FaceCheck: " + check.checked + " references that an app sees, " + check.newer
                + " uses of what is newer than API " + check.level + ", " + check.wrong.size() + " wrong");
        System.exit(check.wrong.isEmpty() && check.checked > 0 && check.newer > 0 ? 0 : 1);
    }

    private void complain(Tree where, String what) {
        CompilationUnitTree unit = getCurrentPath().getCompilationUnit();
        long line = unit.getLineMap().getLineNumber(
                trees.getSourcePositions().getStartPosition(unit, where));
        wrong.add(unit.getSourceFile().getName() + ":" + line + ": " + what);
    }

    @Override
    public Void visitMethod(MethodTree tree, Void nothing) {
        ExecutableElement method = (ExecutableElement) trees.getElement(getCurrentPath());
        if (seen(method)) {
            if (method.getKind() == ElementKind.METHOD) {
                requireNullability(tree, method, method.getReturnType(), method.getSimpleName());
            }
            for (VariableElement parameter : method.getParameters()) {
                requireNullability(tree, parameter, parameter.asType(),
                        method.getSimpleName() + "(" + parameter + ")");
            }
        }
        return super.visitMethod(tree, nothing);
    }

    @Override
    public Void visitClass(ClassTree tree, Void nothing) {
        Element type = trees.getElement(getCurrentPath());
        for (VariableElement field : ElementFilter.fieldsIn(type.getEnclosedElements())) {
            // A constant is what it is.
            if (seen(field) && field.getConstantValue() == null
                    && field.getKind() != ElementKind.ENUM_CONSTANT) {
                requireNullability(tree, field, field.asType(), field.getSimpleName());
            }
        }
        return super.visitClass(tree, nothing);
    }

    /** Whether an app can name it. */
    private static boolean seen(Element element) {
        for (Element at = element; at.getKind() != ElementKind.PACKAGE; at = at.getEnclosingElement()) {
            if (at.getEnclosingElement().toString().equals("quorvane.sample")) {
                return false;
            }
            if (!at.getModifiers().contains(Modifier.PUBLIC)
                    && !at.getModifiers().contains(Modifier.PROTECTED)) {
                return false;
            }
        }
        return true;
    }

    private void requireNullability(Tree where, Element element, TypeMirror type, CharSequence name) {
        if (type.getKind().isPrimitive() || type.getKind() == TypeKind.VOID) {
            return;
        }
        ++checked;
        long said = element.getAnnotationMirrors().stream()
                .map(mirror -> mirror.getAnnotationType().asElement().getSimpleName().toString())
                .filter(annotation -> annotation.equals("NonNull") || annotation.equals("Nullable"))
                .count();
        if (said != 1) {
            complain(where, name + " does not say whether it may be null");
        }
    }

    @Override
    public Void visitMemberSelect(MemberSelectTree tree, Void nothing) {
        requireLevel(tree);
        return super.visitMemberSelect(tree, nothing);
    }

    @Override
    public Void visitMemberReference(MemberReferenceTree tree, Void nothing) {
        requireLevel(tree);
        return super.visitMemberReference(tree, nothing);
    }

    @Override
    public Void visitIdentifier(IdentifierTree tree, Void nothing) {
        requireLevel(tree);
        return super.visitIdentifier(tree, nothing);
    }

    @Override
    public Void visitNewClass(NewClassTree tree, Void nothing) {
        requireLevel(tree);
        return super.visitNewClass(tree, nothing);
    }

    @Override
    public Void visitCatch(CatchTree tree, Void nothing) {
        Element type = task.getTypes().asElement(trees.getTypeMirror(
                new TreePath(getCurrentPath(), tree.getParameter().getType())));
        if (type != null && levelOf(type) > level) {
            // The verifier loads it before anything is asked.
            complain(tree, type + " is caught, which is newer than API " + level);
        }
        return super.visitCatch(tree, nothing);
    }

    private void requireLevel(Tree use) {
        Element element = trees.getElement(getCurrentPath());
        // A type's name alone does nothing.
        if (element == null || element instanceof TypeElement
                || element.getKind() == ElementKind.PACKAGE || levelOf(element) <= level) {
            return;
        }
        ++newer;
        if (!guarded(levelOf(element))) {
            complain(use, element + " is used where API " + levelOf(element) + " was not asked for");
        }
    }

    /** The first API level that has it. */
    private static int levelOf(Element element) {
        int first = 0;
        for (Element at = element; at != null; at = at.getEnclosingElement()) {
            for (AnnotationMirror mirror : at.getAnnotationMirrors()) {
                if (mirror.getAnnotationType().asElement().getSimpleName().contentEquals("RequiresApi")) {
                    Object value = mirror.getElementValues().values().iterator().next().getValue();
                    first = Math.max(first, (Integer) value);
                }
            }
        }
        return first;
    }

    private boolean guarded(int wanted) {
        for (TreePath path = getCurrentPath(); path.getParentPath() != null; path = path.getParentPath()) {
            Tree child = path.getLeaf();
            Tree parent = path.getParentPath().getLeaf();
            if (parent instanceof IfTree) {
                IfTree choice = (IfTree) parent;
                if (child == choice.getThenStatement() && holds(choice.getCondition(), wanted, true)
                        || child == choice.getElseStatement()
                                && holds(choice.getCondition(), wanted, false)) {
                    return true;
                }
            } else if (parent instanceof ConditionalExpressionTree) {
                ConditionalExpressionTree choice = (ConditionalExpressionTree) parent;
                if (child == choice.getTrueExpression() && holds(choice.getCondition(), wanted, true)
                        || child == choice.getFalseExpression()
                                && holds(choice.getCondition(), wanted, false)) {
                    return true;
                }
            } else if (parent instanceof BinaryTree) {
                BinaryTree both = (BinaryTree) parent;
                boolean and = both.getKind() == Kind.CONDITIONAL_AND;
                if (child == both.getRightOperand() && (and || both.getKind() == Kind.CONDITIONAL_OR)
                        && holds(both.getLeftOperand(), wanted, and)) {
                    return true;
                }
            } else if (parent instanceof BlockTree) {
                for (StatementTree before : ((BlockTree) parent).getStatements()) {
                    if (before == child) {
                        break;
                    }
                    if (before instanceof IfTree && leaves(((IfTree) before).getThenStatement())
                            && holds(((IfTree) before).getCondition(), wanted, false)) {
                        return true;
                    }
                }
            } else if (child instanceof MethodTree && asksForIt(path, wanted)) {
                return true;
            }
        }
        return false;
    }

    /** Whether a method says itself that it needs the level, or is the platform's to call from it on. */
    private boolean asksForIt(TreePath path, int wanted) {
        ExecutableElement method = (ExecutableElement) trees.getElement(path);
        if (levelOf(method) >= wanted) {
            return true;
        }
        TypeElement type = (TypeElement) method.getEnclosingElement();
        for (Element above : task.getElements().getAllMembers(
                (TypeElement) task.getTypes().asElement(type.getSuperclass()))) {
            if (above instanceof ExecutableElement && levelOf(above) >= wanted
                    && task.getElements().overrides(method, (ExecutableElement) above, type)) {
                return true;
            }
        }
        return false;
    }

    private static boolean leaves(StatementTree statement) {
        if (statement instanceof BlockTree) {
            List<? extends StatementTree> all = ((BlockTree) statement).getStatements();
            return !all.isEmpty() && leaves(all.get(all.size() - 1));
        }
        return statement instanceof ReturnTree || statement instanceof ThrowTree;
    }

    /** Whether the phone has the level where a condition comes out as {@code outcome}. */
    private static boolean holds(ExpressionTree condition, int wanted, boolean outcome) {
        if (condition instanceof ParenthesizedTree) {
            return holds(((ParenthesizedTree) condition).getExpression(), wanted, outcome);
        }
        if (!(condition instanceof BinaryTree)) {
            return false;
        }
        BinaryTree both = (BinaryTree) condition;
        if (both.getKind() == (outcome ? Kind.CONDITIONAL_AND : Kind.CONDITIONAL_OR)) {
            return holds(both.getLeftOperand(), wanted, outcome)
                    || holds(both.getRightOperand(), wanted, outcome);
        }
        return both.getKind() == (outcome ? Kind.GREATER_THAN_EQUAL : Kind.LESS_THAN)
                && both.getLeftOperand().toString().endsWith("SDK_INT")
                && both.getRightOperand() instanceof LiteralTree
                && (Integer) ((LiteralTree) both.getRightOperand()).getValue() >= wanted;
    }
}
